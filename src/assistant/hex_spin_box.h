#pragma once

#include <QSpinBox>

/// A spin box that shows its value as upper-case hexadecimal digits, without a prefix. It accepts
/// lower-case digits and a leading "0x" as well. Values from 0 up only.
class HexSpinBox : public QSpinBox
{
    Q_OBJECT

public:
    explicit HexSpinBox(QWidget *parent = nullptr);

protected:
    QString textFromValue(int value) const override;
    int valueFromText(const QString &text) const override;
    QValidator::State validate(QString &text, int &position) const override;
};
