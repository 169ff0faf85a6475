#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/gap.h"
#include "cli/input_files.h"
#include "serial/frame_decoder.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QTimer>

#include <memory>
#include <vector>

namespace {

/// A frame whose rest did not come for so long is not waited for any more.
constexpr int silence = 100; // milliseconds; more than ten bytes take at 1200 bit/s

struct Arguments
{
    std::string time = "iso";
    std::string format = "text";
    std::string output;
};

/// Prints what comes over links, a frame a line.
class Monitor : public QObject
{
public:
    Monitor(Report &report, const Arguments &given) : m_report(report), m_given(given)
    {
        m_start.start();
        if (given.output.empty())
            return;
        m_file.setFileName(arguments::text(given.output));
        if (!m_file.open(QIODevice::WriteOnly))
            throw unwritable(m_file.fileName());
    }

    void watch(WatchedLink &link, const QString &name, const FrameFormat &format)
    {
        auto *decoder = new FrameDecoder(FrameSender::Module, format);
        m_decoders.emplace_back(decoder);
        auto *isSilent = new QTimer(this);
        isSilent->setSingleShot(true);
        isSilent->setInterval(silence);
        connect(isSilent, &QTimer::timeout, this,
                [=] { tell(name, decoder->takeRest(), m_lastByte); });
        connect(&link, &WatchedLink::received, this, [=](const QByteArray &bytes) {
            m_lastByte = m_start.elapsed();
            tell(name, decoder->take(bytes), m_lastByte);
            isSilent->start();
        });
    }

    /// The port of `link` was away.
    void tellGap(const QString &link, qint64 milliseconds)
    {
        QJsonObject json = gap::json(link, milliseconds);
        json.insert("time", iso(m_start.elapsed()));
        write(isJson() ? compact(json) : gap::text(link, milliseconds));
    }

    /// Throws a Failure when a line could not be written.
    void check() const
    {
        if (m_isFull)
            throw unwritable(m_file.fileName());
    }

private:
    bool isJson() const { return m_given.format == "json" || m_report.isJson(); }

    /// All of one moment at once; `time` in milliseconds since the start.
    void tell(const QString &link, const QVector<DecodedFrame> &frames, qint64 time)
    {
        if (frames.isEmpty())
            return;
        const QString moment = iso(time);
        QStringList lines;
        for (const DecodedFrame &frame : frames) {
            const qint64 delta = time - m_lastFrame;
            m_lastFrame = time;
            lines.append(isJson() ? compact(json(link, frame, moment, time, delta))
                                  : text(link, frame, moment, time, delta));
        }
        write(lines.join('\n'));
    }

    /// As people call it; what takes most of the time that a line takes.
    QString iso(qint64 time) const { return m_started.addMSecs(time).toString(Qt::ISODateWithMs); }

    QJsonObject json(const QString &link, const DecodedFrame &frame, const QString &moment,
                     qint64 time, qint64 delta) const
    {
        return {{"type", "frame"},
                {"time", moment},
                {"start", static_cast<double>(time) / 1000},
                {"delta", static_cast<double>(delta) / 1000},
                {"link", link},
                {"direction", "received"},
                {"hex", QString::fromLatin1(frame.bytes.toHex())},
                {"meaning", frame.meaning}};
    }

    static QString compact(QJsonObject json)
    {
        json.insert("format", 1);
        return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
    }

    QString text(const QString &link, const DecodedFrame &frame, const QString &moment, qint64 time,
                 qint64 delta) const
    {
        const auto seconds = [](qint64 milliseconds) {
            return QString("%1.%2")
                .arg(milliseconds / 1000)
                .arg(milliseconds % 1000, 3, 10, QChar('0'));
        };
        QString line;
        if (m_given.time == "iso")
            line = moment + ' ';
        else if (m_given.time == "start")
            line = seconds(time).rightJustified(9) + ' ';
        line += ('+' + seconds(delta)).leftJustified(8) + ' ' + link + " < " +
                QString::fromLatin1(frame.bytes.toHex(' ')).toUpper();
        return m_given.format == "text" ? line + "  " + frame.meaning : line;
    }

    void write(const QString &lines)
    {
        if (!m_file.isOpen())
            m_report.lines(lines);
        else if (m_file.write(lines.toUtf8() + '\n') < 0 || !m_file.flush())
            m_isFull = true; // an exception must not pass through Qt
    }

    Report &m_report;
    const Arguments m_given;
    std::vector<std::unique_ptr<FrameDecoder>> m_decoders;
    QElapsedTimer m_start;
    const QDateTime m_started = QDateTime::currentDateTime();
    qint64 m_lastByte = 0;
    qint64 m_lastFrame = 0;
    QFile m_file;
    bool m_isFull = false;
};

int monitor(Cli &cli, const Arguments &given)
{
    const Device &device = cli.device();
    Monitor monitor(cli.report(), given);
    Exchanges &module = cli.connection(Cli::Access::Listens);
    DeviceLinks &ports = module.links();
    QVector<Link> links;
    // UART2 is the one without a name; ED2 alone can be listened to.
    if (ports.isSimulated() || !device.uart2.name.isEmpty() || device.ed2.name.isEmpty())
        links.append(Link::Uart2);
    if (ports.isSimulated() || !device.ed2.name.isEmpty())
        links.append(Link::Ed2);
    for (const Link link : qAsConst(links)) {
        const bool isUart = link == Link::Uart2;
        monitor.watch(ports.at(link), nameOf(link),
                      {device.header1, device.header2, isUart && device.crcEnabled});
    }
    module.listen(
        links, [&monitor] { monitor.check(); },
        [&monitor](Link link, qint64 away) { monitor.tellGap(nameOf(link), away); });
}

} // namespace

void addMonitor(CLI::App &app, Cli &cli)
{
    const auto given = std::make_shared<Arguments>();
    CLI::App *command =
        app.add_subcommand("monitor", "Print what comes from the module, until Ctrl-C");
    command
        ->add_option("--time", given->time,
                     "iso (default), start or delta: what a line begins with")
        ->type_name("KIND")
        ->check(CLI::IsMember({"iso", "start", "delta"}));
    command
        ->add_option("--format", given->format, "text (default), hex without the meaning, or json")
        ->type_name("KIND")
        ->check(CLI::IsMember({"text", "hex", "json"}));
    command->add_option("-o,--output", given->output, "Write to FILE instead")->type_name("FILE");
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return monitor(cli, *given); }); });
}
