#include "download/downloads.h"

#include "engine/engine.h"

Downloads::Downloads(Engine &engine)
    : fonts(engine.add(std::make_unique<BlockDownload>(engine.ed2(), BlockDownload::fonts())))
    , pictures(engine.add(std::make_unique<BlockDownload>(engine.ed2(), BlockDownload::pictures())))
    , linearBmp(engine.add(std::make_unique<BmpDownload>(engine.uart(), BmpDownload::linear())))
    , pagedBmp(engine.add(std::make_unique<BmpDownload>(engine.uart(), BmpDownload::paged())))
    , jpg(engine.add(std::make_unique<JpgDownload>(engine.uart())))
    , flash(engine.add(std::make_unique<FlashDownload>(engine.uart())))
    , os(engine.add(std::make_unique<OsDownload>(engine.uart())))
{
}
