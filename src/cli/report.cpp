#include "cli/report.h"

#include "cli/console.h"
#include "cli/interrupt.h"

#include <QJsonDocument>

#include <cerrno>

namespace {

constexpr int barCells = 20;
const QString eraseRest = QStringLiteral("\x1b[K"); // of the line, on a terminal

} // namespace

void Report::configure(const Settings &settings)
{
    m_settings = settings;
    // Asked in any case, because that makes a terminal understand escape sequences.
    const bool isTerminal = console::isTerminal(m_err);
    m_drawsBar =
        settings.progress == Progress::Bar || (settings.progress == Progress::Auto && isTerminal);
}

void Report::result(const QJsonObject &json, const QString &text)
{
    if (!isJson()) {
        if (!text.isEmpty())
            lines(text);
        return;
    }
    clearBar();
    QJsonObject object = json;
    if (!object.contains("type"))
        object.insert("type", "result");
    print(object);
}

void Report::lines(const QString &lines)
{
    clearBar();
    if (!console::print(m_out, lines + '\n'))
        cut();
}

void Report::note(const QString &text)
{
    if (m_settings.isQuiet)
        return;
    clearBar();
    if (isJson())
        print({{"type", "note"}, {"text", text}});
    else
        console::print(m_err, text + '\n');
}

void Report::detail(const QString &text)
{
    if (m_settings.verbosity > 0)
        note(text);
}

int Report::fail(ExitCode code, const QString &cause, const QString &remedy)
{
    clearBar();
    if (isJson()) {
        print({{"type", "error"}, {"code", code}, {"cause", cause}, {"remedy", remedy}});
    } else {
        console::print(m_err, "k7: " + cause + '\n');
        if (!remedy.isEmpty())
            console::print(m_err, "    " + remedy + '\n');
    }
    return code;
}

void Report::progress(const QString &what, int percent)
{
    if (m_settings.isQuiet || m_settings.progress == Progress::None)
        return;
    const bool isOther = what != m_progressOf;
    if (!isOther && percent == m_shownPercent)
        return;
    if (isJson() || !m_drawsBar) {
        const int step = percent / 10 * 10;
        if (!isOther && step == m_shownPercent)
            return;
        m_progressOf = what;
        m_shownPercent = step;
        if (isJson())
            print({{"type", "progress"}, {"what", what}, {"percent", step}});
        else
            console::print(m_err, QString("%1 %2 %\n").arg(what).arg(step));
        return;
    }
    m_progressOf = what;
    m_shownPercent = percent;
    drawBar(what, percent);
}

void Report::print(QJsonObject json)
{
    json.insert("format", 1);
    const QByteArray line = QJsonDocument(json).toJson(QJsonDocument::Compact) + '\n';
    // Files and pipes get UTF-8, whatever the local encoding is.
    if (console::isTerminal(m_out)) {
        console::print(m_out, QString::fromUtf8(line));
    } else {
        std::fputs(line, m_out);
        std::fflush(m_out);
    }
    if (std::ferror(m_out) != 0)
        cut();
}

void Report::cut()
{
    // Who has read enough, such as `head`, is no fault.
    if (!m_isCut && errno != EPIPE)
        console::print(m_err, "k7: the output cannot be written\n");
    m_isCut = true;
    interrupt::request();
}

void Report::drawBar(const QString &what, int percent)
{
    const int width = console::columns() - 1;
    QString line = QString("%1 %").arg(percent, 3);
    if (width >= barCells + 2 + line.size() + 10) {
        const int filled = percent * barCells / 100;
        line += " [" + QString(filled, '#') + QString(barCells - filled, '.') + ']';
    }
    line = (line + ' ' + what).left(width);
    console::print(m_err, '\r' + line + eraseRest);
    m_isBarShown = true;
}

void Report::clearBar()
{
    if (!m_isBarShown)
        return;
    console::print(m_err, '\r' + eraseRest);
    m_isBarShown = false;
}
