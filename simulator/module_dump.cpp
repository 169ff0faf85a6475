#include "simulator/module_dump.h"

#include "simulator/bytes.h"
#include "simulator/module.h"

#include <QFile>

namespace k7 {

namespace {

bool writeFile(const QDir &folder, const QString &name, const QByteArray &bytes)
{
    QFile file(folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

QByteArray registerBytes(const Module &module)
{
    QByteArray bytes;
    for (int page = 0; page < registerPages; ++page)
        for (int address = 0; address < registersPerPage; ++address)
            appendByte(bytes, module.registerAt(page, address));
    return bytes;
}

QByteArray vpBytes(const Module &module)
{
    QByteArray bytes;
    for (int address = 0; address < vpWords; ++address)
        appendWord(bytes, module.vp(static_cast<quint16>(address)));
    return bytes;
}

QByteArray curveLines(const QVector<quint16> &samples)
{
    QByteArray lines;
    for (const quint16 sample : samples)
        lines += QByteArray::number(sample) + '\n';
    return lines;
}

} // namespace

bool dump(const Module &module, const QDir &folder)
{
    bool written = folder.mkpath(".") &&
                   writeFile(folder, "registers.bin", registerBytes(module)) &&
                   writeFile(folder, "vp.bin", vpBytes(module));
    for (const int block : module.flash().writtenBlocks())
        written =
            written && writeFile(folder, QString::asprintf("flash_%03d.bin", block),
                                 module.flash().read(block * Flash::blockBytes, Flash::blockBytes));
    for (auto it = module.pictures().begin(); it != module.pictures().end(); ++it)
        written = written &&
                  writeFile(folder, QString::asprintf("picture_%03d.bin", it.key()), it.value());
    if (!module.pictureMemory().isEmpty())
        written = written && writeFile(folder, "picture_memory.bin", module.pictureMemory());
    if (!module.jpeg().content.isEmpty())
        written = written && writeFile(folder, "jpeg.jpg", module.jpeg().content);
    for (int channel = 0; channel < curveChannels; ++channel) {
        const QVector<quint16> samples = module.curve(channel);
        if (!samples.isEmpty())
            written = written && writeFile(folder, QString::asprintf("curve_%d.txt", channel),
                                           curveLines(samples));
    }
    return written;
}

} // namespace k7
