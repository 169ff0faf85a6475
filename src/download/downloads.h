#pragma once

#include "download/block_download.h"
#include "download/bmp_download.h"
#include "download/flash_download.h"
#include "download/jpg_download.h"
#include "download/os_download.h"

class Engine;

/// All downloads, as steps of one engine, which owns them.
struct Downloads
{
    explicit Downloads(Engine &engine);

    BlockDownload &fonts;
    BlockDownload &pictures;
    BmpDownload &linearBmp;
    BmpDownload &pagedBmp;
    JpgDownload &jpg;
    FlashDownload &flash;
    OsDownload &os;
};
