#include "common/read_file.h"
#include "simulator/pseudo_terminal.h"
#include "support/program.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <utility>

/// What the program prints of a line that it only listens to.
class TestK7Monitor : public QObject
{
    Q_OBJECT

private slots:
    void monitorDecodesWhatComes()
    {
        QCOMPARE(
            monitored({"monitor"}),
            (QStringList{"UART2 < 5A A5 03 82 4F 4B  acknowledgement of a write",
                         "UART2 < 01 02 03  garbage, 3 bytes",
                         "UART2 < 5A A5 06 83 00 0F 01 45 21  holds VP 0x000F, 1 word (version)",
                         "UART2 < 5A A5 09  unfinished frame, 3 bytes"}));
        QCOMPARE(monitored({"monitor", "--time", "delta", "--format", "hex"}).at(1),
                 QString("UART2 < 01 02 03"));
        const QStringList json = monitored({"monitor", "--format", "json"});
        const QJsonObject first = QJsonDocument::fromJson(json.first().toUtf8()).object();
        QCOMPARE(first.value("hex"), QJsonValue("5aa503824f4b"));
        QCOMPARE(first.value("format"), QJsonValue(1));
        QVERIFY(QDateTime::fromString(first.value("time").toString(), Qt::ISODateWithMs).isValid());
    }

    void monitorWritesAFileAndGoesOnWhenThePortIsBack()
    {
        const QTemporaryDir folder;
        const QStringList lines =
            monitored({"monitor", "--time", "start", "-o", folder.filePath("log")}, true);
        QCOMPARE(lines.size(), 6);
        QVERIFY2(lines.at(4).startsWith("-- UART2: the port was away for "),
                 qPrintable(lines.at(4)));
        QCOMPARE(lines.at(5), QString("UART2 < 01 02 04  garbage, 3 bytes"));
    }

    void silentMonitorSleeps()
    {
        k7::PseudoTerminal line;
        line.open();
        QProcess program;
        program.start(K7, {"--uart2", line.path(), "monitor"});
        const auto switches = [&program] {
            QFile status(QString("/proc/%1/status").arg(program.processId()));
            status.open(QIODevice::ReadOnly);
            return QRegularExpression("\nvoluntary_ctxt_switches:\\s*(\\d+)")
                .match(status.readAll())
                .captured(1)
                .toInt();
        };
        QTimer knocks;
        connect(&knocks, &QTimer::timeout, this, [&line] { line.write("x"); });
        knocks.start(50);
        runEventLoopUntil([&program] { return program.bytesAvailable() > 0; });
        knocks.stop();
        // What was written last is told, however busy the computer is; then nothing happens.
        int before = 0;
        runEventLoopUntil([&] {
            QTest::qWait(500);
            return std::exchange(before, switches()) == before;
        });
        QTest::qWait(2000);
        QVERIFY2(switches() - before <= 10, qPrintable(QString::number(switches() - before)));
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        QCOMPARE(exitCodeOf(program), 130);
    }

private:
    /// What the program prints of a line, or writes to "log": four lines, without their times, and
    /// two more when the adapter `isPulled` out and plugged in again.
    QStringList monitored(const QStringList &arguments, bool isPulled = false)
    {
        const QTemporaryDir folder;
        const QString port = folder.filePath("port");
        k7::PseudoTerminal line;
        k7::PseudoTerminal other;
        line.open();
        QFile::link(line.path(), port);
        QProcess program;
        program.start(K7, QStringList{"--uart2", port} + arguments);
        QByteArray printed;
        const auto hasLines = [&](int count) {
            printed = arguments.contains("-o") ? readFile(arguments.last()).value_or(QByteArray())
                                               : printed + program.readAllStandardOutput();
            return printed.count('\n') >= count;
        };
        // What comes before the port is open is dropped.
        QTimer knocks;
        connect(&knocks, &QTimer::timeout, this,
                [&line] { line.write(QByteArray::fromHex("5AA503824F4B")); });
        knocks.start(50);
        runEventLoopUntil([&] { return hasLines(1); });
        knocks.stop();
        line.write(QByteArray::fromHex("010203 5AA50683000F014521 5AA509"));
        runEventLoopUntil([&] {
            hasLines(0);
            return QByteArray(printed).toUpper().replace(" ", "").contains("5AA509");
        });
        if (isPulled) {
            line.hangUp();
            const int seen = (hasLines(0), printed.count('\n'));
            QFile::remove(port);
            other.open();
            QFile::link(other.path(), port);
            runEventLoopUntil([&] { return hasLines(seen + 1); });
            other.write(QByteArray::fromHex("010204"));
            runEventLoopUntil([&] { return hasLines(seen + 2); });
        }
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        const int ended = exitCodeOf(program);
        hasLines(0);
        if (ended != 130)
            return {QString("exit code %1").arg(ended)};
        QStringList lines = QString::fromUtf8(printed).split('\n', Qt::SkipEmptyParts);
        while (lines.size() > (isPulled ? 6 : 4))
            lines.removeFirst(); // more than one of the first frame came through
        for (QString &each : lines)
            each = each.mid(qMax(0, each.indexOf("UART2 <")));
        return lines;
    }
};

QTEST_GUILESS_MAIN(TestK7Monitor)
#include "tst_k7_monitor.moc"
