#include "config/cfg_image.h"
#include "config/cfg_text.h"

#include <QtGlobal>

namespace {

/// What of `image` no setting is written to.
QByteArray untouched(const QByteArray &image)
{
    const QByteArray padded = image.leftJustified(cfgImage::bytes, '\0');
    return padded.mid(6, 2) + padded.mid(16, 16) + padded.mid(39, 3) + padded.mid(45, 3) +
           padded.mid(57, 7) + padded.mid(75, 5) + padded.mid(112);
}

} // namespace

/// Any bytes can be read as a configuration file, as if zeros followed them. What was read can be
/// written into them: it clears no flag, leaves alone what is read only, and changes nothing when
/// it is written again. Its text form says all of it, and any bytes can be read as such a text.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    const QByteArray image(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const cfgText::Result text = cfgText::fromImage(image);
    if (text.fault.isEmpty() && cfgText::toImage(text.bytes).bytes != image)
        qFatal("the text lost something");
    cfgText::toImage(image);

    const CfgSettings settings = cfgImage::read(image, CfgSettings());
    const QByteArray blank(cfgImage::bytes, '\0');
    const CfgSettings padded = cfgImage::read(image + blank, CfgSettings());
    if (cfgImage::fill(blank, settings).image != cfgImage::fill(blank, padded).image ||
        settings.timing != padded.timing || settings.folderName != padded.folderName ||
        settings.key != padded.key)
        qFatal("a missing byte is no zero");

    const cfgImage::Filled filled = cfgImage::fill(image, settings);
    if (filled.fault != cfgImage::Fault::None) {
        if (filled.image != image)
            qFatal("a fault changed the image");
        return 0;
    }
    if (!cfgImage::isCfg(filled.image) || filled.image.size() < image.size() ||
        untouched(filled.image) != untouched(image))
        qFatal("the image lost something");
    for (const int flags : {8, 44})
        if (flags < image.size() && (~filled.image.at(flags) & image.at(flags)) != 0)
            qFatal("a flag was cleared");
    if (cfgImage::fill(filled.image, settings).image != filled.image)
        qFatal("the image changes when it is filled again");
    return 0;
}
