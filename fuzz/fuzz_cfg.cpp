#include "config/cfg_image.h"

#include <QtGlobal>

/// Any bytes can be read as a configuration file, and what was read can be written into them.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    const QByteArray image(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const CfgSettings settings = cfgImage::read(image, CfgSettings());
    const cfgImage::Filled filled = cfgImage::fill(image, settings);
    const bool isWhole = filled.fault == cfgImage::Fault::None
                             ? cfgImage::isCfg(filled.image) && filled.image.size() >= image.size()
                             : filled.image == image;
    if (!isWhole)
        qFatal("the image lost something");
    return 0;
}
