#pragma once

#include "cli/exit_code.h"

#include <QJsonObject>
#include <QString>

#include <cstdio>

/// What a command says. Results go to stdout, all else to stderr, each line at once. As JSON
/// everything is one object a line on stdout, with `"format":1` and a `"type"`.
class Report
{
public:
    enum class Format { Text, Json };
    enum class Progress {
        Auto, ///< a bar where stderr is a terminal, plain lines elsewhere
        Bar,
        Plain,
        None
    };

    struct Settings
    {
        Format format = Format::Text;
        Progress progress = Progress::Auto;
        bool isQuiet = false;
        int verbosity = 0;
    };

    explicit Report(std::FILE *out = stdout, std::FILE *err = stderr) : m_out(out), m_err(err) {}
    ~Report() { clearBar(); }
    Report(const Report &) = delete;
    Report &operator=(const Report &) = delete;

    void configure(const Settings &settings);
    bool isJson() const { return m_settings.format == Format::Json; }
    int verbosity() const { return m_settings.verbosity; }

    /// Whether something could not be written to stdout. From then on the program is interrupted.
    bool isCut() const { return m_isCut; }

    /// A result: one line, or as many as `text` has. An empty `text` is for JSON alone. The type
    /// of the object is "result" unless `json` names another.
    void result(const QJsonObject &json, const QString &text);
    /// Results that are lines of text, or of JSON, already.
    void lines(const QString &lines);
    /// On stderr, and not with -q.
    void note(const QString &text);
    /// The same, but only with -v.
    void detail(const QString &text);
    /// One line of cause, one of remedy, on stderr. Returns `code`, so that a command can end with
    /// it.
    int fail(ExitCode code, const QString &cause, const QString &remedy);
    /// `percent` 0 to 100 of `what`; elsewhere than on a terminal a line per 10 %.
    void progress(const QString &what, int percent);

private:
    void print(QJsonObject json);
    void cut();
    void drawBar(const QString &what, int percent);
    void clearBar();

    std::FILE *const m_out;
    std::FILE *const m_err;
    Settings m_settings;
    bool m_isCut = false;
    bool m_drawsBar = false;
    bool m_isBarShown = false;
    QString m_progressOf;
    int m_shownPercent = -1;
};
