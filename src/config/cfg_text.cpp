#include "config/cfg_text.h"

#include "common/big_endian.h"
#include "common/ini_text.h"
#include "common/whole_number.h"
#include "config/cfg_fields.h"
#include "config/cfg_rows.h"
#include "config/encryption_texts.h"
#include "config/screen_timings.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <utility>

using namespace cfgFields;

namespace cfgText {

namespace {

const QString bytesName = "Module/bytes";
const QString rawGroup = "Raw";
/// No module starts without layout and rate.
constexpr int requiredOffsets[] = {layoutOffset, divisorOffset, divisorOffset + 1};

bool isLocked(const QByteArray &image)
{
    return image.mid(encryptionOffset, 2) == "\x5A\xA5";
}

const cfgRows::Row *rowNamed(const QString &name)
{
    const auto found = std::find_if(cfgRows::all().begin(), cfgRows::all().end(),
                                    [&name](const cfgRows::Row &row) { return row.name == name; });
    return found == cfgRows::all().end() ? nullptr : &*found;
}

/// A file while it is put together from its text.
class Builder
{
public:
    explicit Builder(const QByteArray &base)
        : m_hasBase(!base.isEmpty())
        , m_image(m_hasBase ? base : QByteArray(magic).leftJustified(cfgImage::bytes, '\0'))
    {
    }

    /// Raw bytes count last, whatever their place in the text.
    Result build(const QVector<iniText::Assignment> &assignments)
    {
        for (const auto &[isRaw, isSize] : {std::pair(false, true), {false, false}, {true, false}})
            for (const iniText::Assignment &assignment : assignments)
                if ((assignment.group == rawGroup) == isRaw &&
                    (nameOf(assignment) == bytesName) == isSize)
                    take(assignment);
        checkWhole();
        return {m_image, m_fault};
    }

    const QByteArray &image() const { return m_image; }
    /// Whether the text said anything of the byte at `offset`.
    bool names(int offset) const { return m_lines.contains(offset); }

private:
    static QString nameOf(const iniText::Assignment &assignment)
    {
        return assignment.group + '/' + assignment.key;
    }

    void take(const iniText::Assignment &assignment)
    {
        if (!m_fault.isEmpty())
            return;
        m_line = assignment.line;
        const QString name = nameOf(assignment);
        QString fault;
        if (m_names.contains(name))
            fault = "stands there twice";
        else if (name == bytesName)
            fault = takeSize(assignment.value);
        else if (assignment.group == rawGroup)
            fault = takeRaw(assignment.key, assignment.value);
        else if (const cfgRows::Row *row = rowNamed(name))
            fault = takeRow(*row, assignment.value);
        else
            fault = "is no key";
        m_names.insert(name);
        if (!fault.isEmpty())
            m_fault = QString("line %1: %2 %3").arg(m_line).arg(name, fault);
    }

    QString takeSize(const QString &value)
    {
        const auto bytes = wholeNumber(value, 1, maxBytes);
        if (!bytes)
            return QString("is not 1 to %1").arg(maxBytes);
        m_hasSize = true;
        m_image = m_image.leftJustified(*bytes, '\0', true);
        return {};
    }

    QString takeRow(const cfgRows::Row &row, const QString &value)
    {
        if (row.offset == divisorOffset && names(divisorOffset))
            return "says the rate a second time";
        const auto bytes =
            row.put(m_image.mid(row.offset, row.bytes).leftJustified(row.bytes, '\0'), value);
        return bytes ? put(row.offset, *bytes) : "is not " + row.expected;
    }

    QString takeRaw(const QString &offset, const QString &value)
    {
        const auto at = wholeNumber(offset, 0, maxBytes);
        const auto bytes = cfgRows::bytesFromHex(value);
        if (!at || !bytes)
            return "is not an offset with bytes in hexadecimal";
        return put(*at, *bytes);
    }

    QString put(int offset, const QByteArray &bytes)
    {
        const int end = offset + bytes.size();
        if (end > (m_hasSize ? m_image.size() : maxBytes))
            return "does not fit into the file";
        m_image = m_image.leftJustified(end, '\0').replace(offset, bytes.size(), bytes);
        for (int i = offset; i < end; ++i)
            m_lines.insert(i, m_line);
        return {};
    }

    void checkWhole()
    {
        if (!m_fault.isEmpty())
            return;
        for (const int offset : requiredOffsets)
            if (!m_hasBase && offset < m_image.size() && !names(offset))
                m_fault = QString(offset == layoutOffset ? "Module/layout" : "Module/baudRate") +
                          " is missing";
        if (const int line = lineThatLocksWithoutKey())
            m_fault = QString("line %1: the card would be locked, and Encryption/key is missing")
                          .arg(line);
        if (!cfgImage::isCfg(m_image))
            m_fault = "the file would not begin with K7D";
    }

    /// 0 when there is none. A file that is said to end before its key needs none.
    int lineThatLocksWithoutKey() const
    {
        const int end = keyOffset + encryptionTexts::keyBytes;
        bool hasKey = m_hasSize && m_image.size() < end;
        for (int i = keyOffset; i < end; ++i)
            hasKey |= names(i) || bigEndian::byteAt(m_image, i) != 0;
        return isLocked(m_image) && !hasKey
                   ? qMax(m_lines.value(encryptionOffset), m_lines.value(encryptionOffset + 1))
                   : 0;
    }

    const bool m_hasBase;
    bool m_hasSize = false;
    QByteArray m_image;
    QSet<QString> m_names;
    QHash<int, int> m_lines; ///< by the offsets that they tell of
    int m_line = 0;
    QString m_fault;
};

/// The screens that have the display timing of `image`.
QByteArray timingComment(const QByteArray &image)
{
    QByteArrayList sizes;
    for (const ScreenTiming &screen : screenTimings(cfgImage::layoutOf(image).value_or(-1)))
        if (std::equal(screen.record.begin() + 1, screen.record.end(), image.begin() + timingOffset,
                       [](quint8 byte, char read) { return byte == static_cast<quint8>(read); }))
            sizes.append(screen.size);
    return sizes.isEmpty() ? QByteArray() : "  ; " + sizes.join(" or ");
}

QByteArray keysOf(const QByteArray &image)
{
    QByteArray text =
        "; K7 configuration file\n\n[Module]\nbytes=" + QByteArray::number(image.size());
    QString group = "Module";
    for (const cfgRows::Row &row : cfgRows::all()) {
        if (row.offset + row.bytes > image.size())
            continue;
        const QByteArray bytes = image.mid(row.offset, row.bytes);
        QString value = row.read(bytes);
        if (row.offset == keyOffset && isLocked(image)) // of zeros, too
            value = QString::fromLatin1(bytes.toHex(' '));
        if (value.isNull())
            continue;
        if (row.group() != group)
            text += "\n\n[" + row.group().toLatin1() + ']';
        group = row.group();
        text += '\n' + row.name.section('/', 1).toLatin1() + '=' + value.toLatin1();
        if (row.offset == timingOffset)
            text += timingComment(image);
    }
    return text + '\n';
}

/// What the keys, as `told` took them, do not tell of `image`, 32 bytes to a line.
QByteArray rawOf(const QByteArray &image, const Builder &told)
{
    constexpr int bytesPerLine = 32;
    const auto isUntold = [&](int i) {
        const auto &required = requiredOffsets;
        return image.at(i) != told.image().at(i) ||
               (!told.names(i) &&
                std::find(std::begin(required), std::end(required), i) != std::end(required));
    };
    QByteArray text;
    for (int i = 0, start = 0; i < image.size(); i = qMax(i, start + 1)) {
        start = i;
        while (i < image.size() && i - start < bytesPerLine && isUntold(i))
            ++i;
        if (i > start)
            text += QByteArray::number(start) + '=' + image.mid(start, i - start).toHex(' ') + '\n';
    }
    return text.isEmpty() ? text : "\n[" + rawGroup.toLatin1() + "]\n" + text;
}

} // namespace

Result fromImage(const QByteArray &image)
{
    if (!cfgImage::isCfg(image))
        return {{}, "it is no configuration file: it does not begin with K7D"};
    if (image.size() > maxBytes)
        return {{}, "it is longer than 64 KiB: no configuration file is"};
    const QByteArray keys = keysOf(image);
    Builder told{QByteArray()};
    told.build(iniText::parse(keys).assignments);
    return {keys + rawOf(image, told), {}};
}

Result toImage(const QByteArray &text, const QByteArray &base)
{
    if (!base.isEmpty() && (!cfgImage::isCfg(base) || base.size() > maxBytes))
        return {{}, "the base is no configuration file"};
    const iniText::Parsed parsed = iniText::parse(text);
    if (parsed.badLine > 0)
        return {{}, QString("line %1 is neither a group, a key nor a comment").arg(parsed.badLine)};
    if (!parsed.emptyGroups.isEmpty())
        return {{},
                QString("line %1: [%2] has no key")
                    .arg(parsed.emptyGroups.first().line)
                    .arg(parsed.emptyGroups.first().name)};
    return Builder(base).build(parsed.assignments);
}

} // namespace cfgText
