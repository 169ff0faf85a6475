#include <QDir>
#include <QRandomGenerator>
#include <QtTest>

// The fuzz targets, each under the name of its file.
using Target = int(const quint8 *data, size_t size);
extern "C" Target fuzz_cfg, fuzz_crc_items, fuzz_ico, fuzz_replies, fuzz_settings;

namespace {

QVector<QByteArray> corpusOf(const char *name)
{
    const QDir folder(QString(FUZZ_CORPUS "/%1").arg(name));
    QVector<QByteArray> inputs;
    for (const QString &entry : folder.entryList(QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(entry));
        if (file.open(QIODevice::ReadOnly))
            inputs.append(file.readAll());
    }
    return inputs;
}

/// `input` with one to six small changes; pieces come from `donor`, which is not empty.
QByteArray mutated(QByteArray input, const QByteArray &donor, QRandomGenerator &random)
{
    for (int changes = random.bounded(1, 7); changes > 0; --changes) {
        const int at = random.bounded(input.size() + 1);
        const int count = random.bounded(1, 12);
        if (const int kind = random.bounded(10); kind == 0)
            input.truncate(at);
        else if (kind == 1)
            input.remove(at, count);
        else if (kind == 2)
            input.insert(at, donor.mid(random.bounded(donor.size()), count));
        else if (kind == 3)
            input.insert(at, QByteArray(count, static_cast<char>(random.bounded(256))));
        else if (kind < 7 && at < input.size())
            input[at] = static_cast<char>(input.at(at) ^ 1 << random.bounded(8));
        else if (at < input.size())
            input[at] = "\0\1\x7F\x80\xFF\x5A\xA5"[random.bounded(7)];
    }
    return input;
}

} // namespace

/// The fuzz targets over their corpus and always the same mutations of it, with any compiler. They
/// end the program when they find a fault.
class TestFuzzReplay : public QObject
{
    Q_OBJECT

private slots:
    void cfg() { replay("fuzz_cfg", fuzz_cfg); }
    void crcItems() { replay("fuzz_crc_items", fuzz_crc_items); }
    void ico() { replay("fuzz_ico", fuzz_ico, 500); }
    void replies() { replay("fuzz_replies", fuzz_replies); }
    void settings() { replay("fuzz_settings", fuzz_settings, 400); }

private:
    static void replay(const char *name, Target target, int mutations = 4000)
    {
        QVector<QByteArray> inputs = corpusOf(name);
        const int files = inputs.size();
        QVERIFY(files > 0);
        QRandomGenerator random(1);
        for (int i = 0; i < mutations; ++i)
            inputs.append(mutated(inputs.at(random.bounded(files)),
                                  inputs.at(random.bounded(files)), random));
        for (const QByteArray &input : qAsConst(inputs))
            target(reinterpret_cast<const quint8 *>(input.constData()),
                   static_cast<size_t>(input.size()));
    }
};

QTEST_APPLESS_MAIN(TestFuzzReplay)
#include "tst_fuzz_replay.moc"
