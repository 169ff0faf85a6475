// Commands of k7 on a simulated module behind adapters that are late, lose replies, double them or
// damage them, and go away: thousands of sessions in virtual time, each from a seed. A command must
// end with 0 exactly when the module holds what it was to hold.
//
//     fault_matrix [--count N] [--first SEED]   N sessions; their figures, and each seed that is
//     wrong fault_matrix --seed SEED                  one of them again, with all that is said
//     fault_matrix --unplug [--seed SEED]       each download, unplugged at each of its tenths

#include "bench/fault_kinds.h"
#include "bench/faulty_world.h"
#include "bench/measure.h"
#include "cli/cli.h"

#include <QDir>
#include <QMap>
#include <QTemporaryDir>

#include <memory>

namespace {

using faultMatrix::Kind;
using faultMatrix::kinds;

FaultyWorld::Nature calmNature(quint32 seed, const Kind &kind)
{
    FaultyWorld::Nature nature;
    nature.seed = seed;
    nature.module.layout = kind.layout;
    return nature;
}

FaultyWorld::Nature faultyNature(k7::Random &random, quint32 seed, const Kind &kind)
{
    FaultyWorld::Nature nature = calmNature(seed, kind);
    if (random.happens(500))
        nature.module.format = {0x12, 0x34, false};
    nature.module.format.crcEnabled = random.happens(500);
    nature.wiring.latency = random.upTo(100);
    nature.wiring.jitter = random.upTo(20);
    nature.wiring.split = random.upTo(62);
    for (int *rate : {&nature.wiring.lost, &nature.wiring.doubled, &nature.wiring.flipped})
        *rate = random.happens(500) ? random.upTo(20) : 0;
    if (random.happens(200)) {
        nature.leaves = random.upTo(4000);
        nature.returns = nature.leaves + 20 + random.upTo(3000);
    }
    return nature;
}

/// A session: a module, what is to be done with it, and a folder for the files and for what the
/// tool remembers.
class Stage
{
public:
    FaultyWorld world;

    Stage(const FaultyWorld::Nature &nature, const Kind &kind, bool isLarge)
        : world(nature), m_format(nature.module.format), m_layout(nature.module.layout)
    {
        faultMatrix::Source source{k7::Random(nature.seed), world.module(), m_folder, isLarge};
        m_task = kind.prepare(source);
    }

    /// Runs the command; its exit code.
    int run(const QStringList &options = {})
    {
        for (const char *name : {"XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
            qputenv(name, m_home.path().toLocal8Bit());
        std::rewind(m_printed.get());
        std::rewind(m_errors.get());
        Cli cli({m_printed.get(), m_errors.get(), [this] { return world.links(); }});
        std::vector<std::string> words; // the last one first
        for (const QString &word : arguments() + options)
            words.insert(words.begin(), word.toStdString());
        const auto refused = cli.read(words);
        const int code = refused ? *refused : cli.runCommand();
        world.rest(20); // for what is still on the lines
        return code;
    }
    QStringList arguments() const
    {
        const QString header = QString("%1%2")
                                   .arg(m_format.header1, 2, 16, QChar('0'))
                                   .arg(m_format.header2, 2, 16, QChar('0'));
        const QString model = QString("K7UID%1").arg(static_cast<int>(m_layout) + 1);
        QStringList words{"--uart2", "/uart2",  "--ed2", "/ed2",     "--progress",
                          "none",    "--model", model,   "--header", header};
        if (m_format.crcEnabled)
            words.append("--crc");
        return words + m_task.arguments;
    }
    int missing() const { return m_task.missing(text(m_printed)); }
    QString said() const { return text(m_printed) + text(m_errors); }

private:
    using Output = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;
    static QString text(const Output &output)
    {
        const long end = std::ftell(output.get());
        QByteArray bytes(static_cast<int>(end), '\0');
        std::rewind(output.get());
        bytes.resize(
            static_cast<int>(std::fread(bytes.data(), 1, static_cast<size_t>(end), output.get())));
        return QString::fromUtf8(bytes);
    }

    const k7::FrameFormat m_format;
    const k7::Layout m_layout;
    const QTemporaryDir m_folder; ///< of the files
    const QTemporaryDir m_home;   ///< of what the tool remembers
    const Output m_printed{std::tmpfile(), std::fclose};
    const Output m_errors{std::tmpfile(), std::fclose};
    faultMatrix::Task m_task;
};

/// The port is not there, or the module did not answer: whatever it holds, nothing was claimed.
bool isHonestError(int code)
{
    return code == ExitCode::noPort || code == ExitCode::noAnswer;
}

/// What a code claims must be so: 0 that the module holds everything, 1 and 6 that it does not.
bool isRight(int code, int missing)
{
    if (code == ExitCode::done)
        return missing == 0;
    if (code == ExitCode::differs || code == ExitCode::stillDiffers)
        return missing > 0;
    return isHonestError(code);
}

struct Ending
{
    const Kind &kind;
    int code;
    bool isWrong;
    bool wasUnplugged;
};

Ending runSession(quint32 seed, bool isVerbose)
{
    k7::Random random(~seed); // of its own, so that files and faults have nothing in common
    const Kind &kind = kinds.at(random.upTo(kinds.size() - 1));
    const FaultyWorld::Nature nature = faultyNature(random, seed, kind);
    Stage stage(nature, kind, random.happens(50));
    if (isVerbose)
        stage.world.module().setTrace([&stage](const QString &line) {
            std::printf("%7lld %s\n", stage.world.milliseconds(), qPrintable(line));
        });
    const bool waits = random.happens(500);
    const int code = stage.run(waits ? QStringList{"--wait", "5"} : QStringList());
    const int missing = stage.missing();
    const bool wasUnplugged =
        nature.leaves != FaultyWorld::never && stage.world.milliseconds() >= nature.leaves;
    if (isVerbose) {
        const k7::Wiring &wiring = nature.wiring;
        std::printf(
            "%s: k7 %s\n%slatency %d, jitter %d, split %d, lost %d, doubled %d, flipped %d, "
            "away from %lld to %lld of %lld\ncode %d, missing %d\n",
            kind.name, qPrintable(stage.arguments().join(' ')), qPrintable(stage.said()),
            wiring.latency, wiring.jitter, wiring.split, wiring.lost, wiring.doubled,
            wiring.flipped, nature.leaves, nature.returns, stage.world.milliseconds(), code,
            missing);
    }
    return {kind, code, stage.world.isOver() || !isRight(code, missing), wasUnplugged};
}

int runMatrix(quint32 first, int count)
{
    const double start = measure::threadSeconds();
    QMap<QString, QMap<QString, int>> table;
    int done = 0;
    int unplugged = 0;
    int wrong = 0;
    for (int i = 0; i < count; ++i) {
        const quint32 seed = first + static_cast<quint32>(i);
        const Ending ending = runSession(seed, false);
        // A check that finds a difference has done its work.
        done += ending.code == ExitCode::done || ending.code == ExitCode::differs ? 1 : 0;
        unplugged += ending.wasUnplugged ? 1 : 0;
        ++table[ending.kind.name][QString("ended in %1").arg(ending.code)];
        if (!ending.isWrong)
            continue;
        ++wrong;
        ++table[ending.kind.name][QString("wrong with %1").arg(ending.code)];
        std::printf("wrong: seed %u, %s, ended in %d\n", seed, ending.kind.name, ending.code);
    }
    for (auto kind = table.begin(); kind != table.end(); ++kind) {
        std::printf("%-14s", qPrintable(kind.key()));
        for (auto ending = kind->begin(); ending != kind->end(); ++ending)
            std::printf("  %s: %d", qPrintable(ending.key()), ending.value());
        std::printf("\n");
    }
    // Only a port that went away excuses an error.
    measure::report("MATRIX_SESSIONS", count, count);
    measure::report("MATRIX_DONE", done, count - unplugged);
    measure::report("MATRIX_ERRORS", count - done, unplugged);
    measure::report("MATRIX_WRONG", wrong, 0);
    measure::report("MATRIX_SECONDS", measure::threadSeconds() - start, 60);
    return wrong > 0 ? 1 : 0;
}

/// Whether a download that is cut off at `tenth` tells so, and the next one sends just the rest.
bool survivesUnplugging(const Kind &kind, quint32 seed, qint64 duration, int tenth)
{
    FaultyWorld::Nature nature = calmNature(seed, kind);
    nature.leaves = duration * (2 * tenth + 1) / 20;
    nature.returns = nature.leaves + 500;
    Stage stage(nature, kind, true);
    const int first = stage.run();
    const bool isHonest = isHonestError(first) || (first == ExitCode::done && stage.missing() == 0);
    stage.world.rest(1000);
    const int missing = stage.missing();
    const int before = stage.world.announced();
    const int second = stage.run();
    const int sent = stage.world.announced() - before;
    const bool holds =
        isHonest && second == ExitCode::done && stage.missing() == 0 && sent <= missing;
    std::printf(
        "%s, unplugged at %lld of %lld ms: ended in %d, then in %d; %d sent of %d missing%s\n",
        kind.name, nature.leaves, duration, first, second, sent, missing, holds ? "" : "; wrong");
    return holds;
}

qint64 undisturbedDuration(const Kind &kind, quint32 seed)
{
    Stage stage(calmNature(seed, kind), kind, true);
    if (stage.run() != ExitCode::done)
        qFatal("%s fails undisturbed: %s", kind.name, qPrintable(stage.said()));
    return stage.world.milliseconds();
}

int runUnplugged(quint32 seed)
{
    int all = 0;
    int held = 0;
    for (const Kind &kind : kinds) {
        if (!kind.isDownload)
            continue;
        const qint64 duration = undisturbedDuration(kind, seed);
        for (int tenth = 0; tenth < 10; ++tenth, ++all)
            held += survivesUnplugging(kind, seed, duration, tenth) ? 1 : 0;
    }
    measure::report("UNPLUG_HELD", held, all);
    return held < all ? 1 : 0;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_NO_GLIB", "1"); // whose event loop turns more slowly
    const QCoreApplication application(argc, argv);
    qunsetenv("K7_DEVICE");
    QDir::setCurrent(QDir::rootPath()); // where no k7.ini is
    const QStringList words = QCoreApplication::arguments().mid(1);
    const auto value = [&words](const char *name, quint32 otherwise) {
        const int at = words.indexOf(name);
        return at < 0 ? otherwise : words.value(at + 1).toUInt();
    };
    if (words.contains("--unplug"))
        return runUnplugged(value("--seed", 1));
    if (words.contains("--seed"))
        return runSession(value("--seed", 1), true).isWrong ? 1 : 0;
    return runMatrix(value("--first", 1), static_cast<int>(value("--count", 10000)));
}
