#include "common/read_file.h"
#include "simulator/pseudo_terminal.h"
#include "support/program.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

/// What the program prints of a line that it only listens to.
class TestK7Monitor : public QObject
{
    Q_OBJECT

private slots:
    void monitorDecodesWhatComes()
    {
        QCOMPARE(
            monitored({"monitor"}, 130),
            (QStringList{"UART2 < 5A A5 03 82 4F 4B  acknowledgement of a write",
                         "UART2 < 01 02 03  garbage, 3 bytes",
                         "UART2 < 5A A5 06 83 00 0F 01 45 21  holds VP 0x000F, 1 word (version)",
                         "UART2 < 5A A5 09  unfinished frame, 3 bytes"}));
        QCOMPARE(monitored({"monitor", "--time", "delta", "--format", "hex"}, 130).at(1),
                 QString("UART2 < 01 02 03"));
        const QStringList json = monitored({"monitor", "--format", "json"}, 130);
        const QJsonObject first = QJsonDocument::fromJson(json.first().toUtf8()).object();
        QCOMPARE(first.value("hex"), QJsonValue("5aa503824f4b"));
        QCOMPARE(first.value("format"), QJsonValue(1));
        QVERIFY(QDateTime::fromString(first.value("time").toString(), Qt::ISODateWithMs).isValid());
    }

    void monitorWritesAFileAndNoticesAnUnplug()
    {
        const QTemporaryDir folder;
        QCOMPARE(monitored({"monitor", "--time", "start", "-o", folder.filePath("log")}, 5).size(),
                 4);
    }

private:
    /// What the program prints of a line, or writes to "log": four lines, without their times. It
    /// ends with Ctrl-C, or when the line is pulled out, as `code` tells.
    QStringList monitored(const QStringList &arguments, int code)
    {
        k7::PseudoTerminal line;
        line.open();
        QProcess program;
        program.start(K7, QStringList{"--uart2", line.path()} + arguments);
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
        if (code == 130)
            ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        else
            line.hangUp();
        const int ended = exitCodeOf(program);
        hasLines(0);
        if (ended != code)
            return {QString("exit code %1").arg(ended)};
        QStringList lines = QString::fromUtf8(printed).split('\n', Qt::SkipEmptyParts);
        while (lines.size() > 4)
            lines.removeFirst(); // more than one of the first frame came through
        for (QString &each : lines)
            each = each.mid(qMax(0, each.indexOf("UART2 <")));
        return lines;
    }
};

QTEST_GUILESS_MAIN(TestK7Monitor)
#include "tst_k7_monitor.moc"
