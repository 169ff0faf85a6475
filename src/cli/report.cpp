#include "cli/report.h"

#include <QJsonDocument>

#include <cstdio>

#ifdef Q_OS_UNIX
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace {

constexpr int barCells = 20;

void print(std::FILE *file, const QString &text)
{
    std::fprintf(file, "%s\n", text.toLocal8Bit().constData());
    std::fflush(file);
}

void print(QJsonObject json)
{
    json.insert("format", 1);
    print(stdout, QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)));
}

bool isTerminal(std::FILE *file)
{
#ifdef Q_OS_UNIX
    return isatty(fileno(file)) != 0;
#else
    Q_UNUSED(file)
    return false;
#endif
}

/// Columns of the terminal at stderr; 80 where it does not tell.
int columns()
{
#ifdef Q_OS_UNIX
    winsize size{};
    if (ioctl(fileno(stderr), TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
#endif
    return 80;
}

} // namespace

void Report::configure(const Settings &settings)
{
    m_settings = settings;
    m_drawsBar = settings.progress == Progress::Bar ||
                 (settings.progress == Progress::Auto && isTerminal(stderr));
}

void Report::result(const QJsonObject &json, const QString &text)
{
    clearBar();
    if (!isJson()) {
        if (!text.isEmpty())
            print(stdout, text);
        return;
    }
    QJsonObject object = json;
    if (!object.contains("type"))
        object.insert("type", "result");
    print(object);
}

void Report::note(const QString &text)
{
    if (m_settings.isQuiet)
        return;
    clearBar();
    if (isJson())
        print({{"type", "note"}, {"text", text}});
    else
        print(stderr, text);
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
        print(stderr, "k7: " + cause);
        if (!remedy.isEmpty())
            print(stderr, "    " + remedy);
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
            print(stderr, QString("%1 %2 %").arg(what).arg(step));
        return;
    }
    m_progressOf = what;
    m_shownPercent = percent;
    drawBar(what, percent);
}

void Report::drawBar(const QString &what, int percent)
{
    const int width = columns() - 1;
    QString line = QString("%1 %").arg(percent, 3);
    if (width >= barCells + 2 + line.size() + 10) {
        const int filled = percent * barCells / 100;
        line += " [" + QString(filled, '#') + QString(barCells - filled, '.') + ']';
    }
    line = (line + ' ' + what).left(width);
    std::fprintf(stderr, "\r%s\x1b[K", line.toLocal8Bit().constData());
    std::fflush(stderr);
    m_isBarShown = true;
}

void Report::clearBar()
{
    if (!m_isBarShown)
        return;
    std::fprintf(stderr, "\r\x1b[K");
    std::fflush(stderr);
    m_isBarShown = false;
}
