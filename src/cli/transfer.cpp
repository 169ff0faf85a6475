#include "cli/transfer.h"

#include "cli/exchanges.h"
#include "cli/memory.h"
#include "download/flash_blocks.h"
#include "download/screen_picture.h"
#include "serial/device_values.h"

namespace {

using Kind = ProjectFile::Kind;

void sendFlash(Exchanges &module, const ProjectFile &file, const QVector<int> &blocks,
               const QString &what)
{
    const QVector<BlockDownload::Block> all = flashBlocks(file.number, file.content);
    QVector<BlockDownload::Block> wanted;
    for (const int block : blocks)
        wanted.append(all.at(block));
    module.run(Link::Ed2, what,
               [&] { module.downloads().fonts.start(wanted, BlockDownload::fontEndTick); });
}

void sendPicture(Exchanges &module, const ProjectFile &file, const QString &what)
{
    module.run(Link::Ed2, what, [&] {
        module.downloads().pictures.start({{static_cast<quint8>(file.number), file.content}},
                                          screenPicture::endTick(file.size));
    });
}

void sendBmp(Exchanges &module, const ProjectFile &file, const QString &what)
{
    Downloads &downloads = module.downloads();
    const bool isPaged = module.links().device().model == Model::K7uid2;
    module.run(Link::Uart2, what, [&] {
        (isPaged ? downloads.pagedBmp : downloads.linearBmp).start(file.content, [&file] {
            return file.number;
        });
    });
}

void sendIcon(Exchanges &module, const ProjectFile &file, const QString &what)
{
    const bool isK7uid1 = module.links().device().model == Model::K7uid1;
    module.run(Link::Uart2, what, [&] {
        module.downloads().flash.start(file.content, file.number, [isK7uid1] { return isK7uid1; });
    });
}

void sendOs(Exchanges &module, const ProjectFile &file, const QString &what)
{
    module.run(Link::Uart2, what, [&] {
        module.downloads().os.load(file.content);
        module.downloads().os.start();
    });
}

} // namespace

void transfer::compare(Exchanges &module, const QVector<CrcCheckItem *> &units, const QString &what)
{
    CrcComparison &comparison = module.comparison();
    QVector<CrcCheckItem> items;
    for (const CrcCheckItem *unit : units)
        items.append(*unit);
    comparison.setItems(items);
    module.run(Link::Uart2, what, [&comparison] { comparison.start(); });
    for (int i = 0; i < items.size(); ++i)
        *units.at(i) = comparison.items().at(i);
}

void transfer::send(Exchanges &module, const ProjectFile &file, const QVector<int> &blocks,
                    const QString &what)
{
    switch (file.kind) {
    case Kind::Flash:
        return sendFlash(module, file, blocks, what);
    case Kind::Picture:
        return sendPicture(module, file, what);
    case Kind::Bmp:
        return sendBmp(module, file, what);
    case Kind::Icon:
        return sendIcon(module, file, what);
    case Kind::Os:
        return sendOs(module, file, what);
    }
}

void transfer::restart(Exchanges &module)
{
    constexpr int beginning = 500; // milliseconds, in which no module answers
    constexpr int longest = 10000;
    module.run(Link::Uart2, {}, [&module] { module.engine().resetSystem(); });
    module.pause(beginning);
    module.untilAnswered(longest, [&module] {
        memory::readVp(module, deviceValues::version.address, deviceValues::version.words);
    });
}
