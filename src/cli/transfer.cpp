#include "cli/transfer.h"

#include "cli/connection.h"
#include "download/flash_blocks.h"
#include "download/screen_picture.h"
#include "serial/device_values.h"

namespace {

using Kind = ProjectFile::Kind;
using Link = Connection::Link;

void sendFlash(Connection &module, const ProjectFile &file, const QVector<int> &blocks)
{
    const QVector<BlockDownload::Block> all = flashBlocks(file.number, file.content);
    QVector<BlockDownload::Block> wanted;
    for (const int block : blocks)
        wanted.append(all.at(block));
    module.run(Link::Ed2, file.name,
               [&] { module.downloads().fonts.start(wanted, BlockDownload::fontEndTick); });
}

void sendPicture(Connection &module, const ProjectFile &file)
{
    module.run(Link::Ed2, file.name, [&] {
        module.downloads().pictures.start({{static_cast<quint8>(file.number), file.content}},
                                          screenPicture::endTick(file.size));
    });
}

void sendBmp(Connection &module, const ProjectFile &file)
{
    Downloads &downloads = module.downloads();
    const bool isPaged = module.device().model == Model::K7uid2;
    module.run(Link::Uart2, file.name, [&] {
        (isPaged ? downloads.pagedBmp : downloads.linearBmp).start(file.content, [&file] {
            return file.number;
        });
    });
}

void sendIcon(Connection &module, const ProjectFile &file)
{
    const bool isK7uid1 = module.device().model == Model::K7uid1;
    module.run(Link::Uart2, file.name, [&] {
        module.downloads().flash.start(file.content, file.number, [isK7uid1] { return isK7uid1; });
    });
}

void waitUntilStarted(Connection &module)
{
    constexpr int attempts = 20;
    for (int attempt = 1;; ++attempt) {
        module.pause(500);
        try {
            module.readVp(deviceValues::version.address, deviceValues::version.words);
            return;
        } catch (const Failure &failure) {
            if (failure.code != ExitCode::noAnswer || attempt == attempts)
                throw;
        }
    }
}

void sendOs(Connection &module, const ProjectFile &file)
{
    module.run(Link::Uart2, file.name, [&] {
        module.downloads().os.load(file.content);
        module.downloads().os.start();
    });
    waitUntilStarted(module);
}

void sendOnce(Connection &module, const ProjectFile &file, const QVector<int> &blocks)
{
    switch (file.kind) {
    case Kind::Flash:
        return sendFlash(module, file, blocks);
    case Kind::Picture:
        return sendPicture(module, file);
    case Kind::Bmp:
        return sendBmp(module, file);
    case Kind::Icon:
        return sendIcon(module, file);
    case Kind::Os:
        return sendOs(module, file);
    }
}

} // namespace

void transfer::compare(Connection &module, const QVector<CrcCheckItem *> &units,
                       const QString &what)
{
    QVector<CrcCheckItem> items;
    for (const CrcCheckItem *unit : units)
        items.append(*unit);
    module.compare(items, what);
    for (int i = 0; i < items.size(); ++i)
        *units.at(i) = items.at(i);
}

void transfer::send(Connection &module, const ProjectFile &file, const QVector<int> &blocks)
{
    // A computer that was held up for long sends the next block while the module is still at work
    // on the last one, and gets no acknowledgement. After some silence both begin anew; what was
    // spoilt is found by the check.
    constexpr int attempts = 3;
    constexpr int silence = 600; // milliseconds
    for (int attempt = 1;; ++attempt) {
        try {
            return sendOnce(module, file, blocks);
        } catch (const Failure &failure) {
            const bool isLost =
                module.link(Link::Uart2).wasLost() || module.link(Link::Ed2).wasLost();
            if (failure.code != ExitCode::noAnswer || isLost || file.kind == Kind::Os ||
                attempt == attempts)
                throw;
        }
        module.pause(silence);
    }
}
