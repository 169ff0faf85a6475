#pragma once

#include <QtTest>

/// Names the row of a loop in which a test fails, by the values that make it.
class Row
{
public:
    template<typename... Values>
    explicit Row(const Values &...values)
    {
        (QDebug(&m_name) << ... << values);
    }
    ~Row()
    {
        if (QTest::currentTestFailed())
            qWarning("failed for %s", qPrintable(m_name));
    }
    Row(const Row &) = delete;
    Row &operator=(const Row &) = delete;

private:
    QString m_name;
};
