#pragma once

#include <QCoreApplication>
#include <QProcess>

/// A process of this program's that ends with it, also when it is killed. Each system has a file of
/// its own.
class ChildProcess final : public QProcess
{
public:
    ChildProcess();

    /// As by Ctrl-C.
    void interrupt();

protected:
    void setupChildProcess() override;

private:
    const qint64 m_parent = QCoreApplication::applicationPid();
};
