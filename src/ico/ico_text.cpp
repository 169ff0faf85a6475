#include "ico/ico_text.h"

#include "common/hex_text.h"
#include "common/ini_text.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/whole_number.h"
#include "ico/ico_library.h"

#include <QBuffer>
#include <QHash>
#include <QMap>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <tuple>

namespace icoText {

namespace {

const QString libraryGroup = "Library";
constexpr int firstAddress = icoLibrary::indexBytes / 2;

QByteArray hex(int number)
{
    return "0x" + QByteArray::number(number, 16).toUpper();
}

/// Where an icon's pixels are, and how many: icons that agree in it share them.
using Place = std::tuple<int, int, int>;

Place placeOf(const IconRecord &icon)
{
    return {icoLibrary::addressIn(icon.entry), icon.width, icon.height};
}

int endOf(int address, const IconRecord &icon)
{
    return address + icon.width * icon.height;
}

void clear(QByteArray &bytes, int offset, int count)
{
    std::fill_n(bytes.begin() + offset, count, '\0');
}

/// What is left of `library` without the entries and pixels of `icons`.
QByteArray restOf(QByteArray library, const QVector<IconRecord> &icons)
{
    for (const IconRecord &icon : icons) {
        clear(library, icon.position * icoLibrary::entryBytes, icoLibrary::entryBytes);
        clear(library, icon.offset, icon.pixelBytes());
    }
    const auto last =
        std::find_if(library.crbegin(), library.crend(), [](char byte) { return byte != '\0'; });
    return library.left(static_cast<int>(library.crend() - last));
}

/// Writes the groups of the icons, one after the other.
class Writer
{
public:
    void add(const IconRecord &icon)
    {
        m_text += "\n[" + QByteArray::number(icon.position) + "]\n";
        if (icon.pixelBytes() == 0)
            m_text += "size=" + QByteArray::number(icon.width) + 'x' +
                      QByteArray::number(icon.height) + '\n';
        else
            m_text += "picture=" + pictureOf(icon).toLatin1() + '\n';
        const QByteArray keyColor = icon.entry.mid(6, 2);
        if (keyColor != icon.pixels().left(2).leftJustified(2, '\0'))
            m_text += "keyColor=" + keyColor.toHex().toUpper() + '\n';
        const int address = icoLibrary::addressIn(icon.entry);
        if (address != m_next)
            m_text += "address=" + hex(address) + '\n';
        m_next = endOf(address, icon);
        m_end = qMax(m_end, m_next);
    }

    const QByteArray &text() const { return m_text; }
    const QVector<Picture> &pictures() const { return m_pictures; }
    /// Bytes up to the end of the last pixels.
    qint64 naturalBytes() const { return 2 * qint64{m_end}; }
    qint64 pixelBytes() const { return m_pixelBytes; }

private:
    QString pictureOf(const IconRecord &icon)
    {
        const Place place = placeOf(icon);
        if (m_lastShared.isEmpty() || place != m_lastPlace) {
            m_lastPlace = place;
            m_lastShared = QString("%1.png").arg(icon.position, 5, 10, QChar('0'));
            m_pictures.append({m_lastShared, icon});
            m_pixelBytes += icon.pixelBytes();
        }
        return m_lastShared;
    }

    QByteArray m_text;
    QVector<Picture> m_pictures;
    int m_next = firstAddress;
    int m_end = firstAddress;
    qint64 m_pixelBytes = 0;
    Place m_lastPlace;
    QString m_lastShared;
};

} // namespace

Parts fromLibrary(const QByteArray &library)
{
    Parts parts;
    QVector<IconRecord> icons;
    if (!icoLibrary::read(library, icons)) {
        parts.fault = "it is no icon library, or it is damaged";
        return parts;
    }
    // By their places, so that those that share pixels follow each other.
    std::stable_sort(icons.begin(), icons.end(), [](const IconRecord &a, const IconRecord &b) {
        return placeOf(a) < placeOf(b);
    });
    Writer writer;
    for (const IconRecord &icon : qAsConst(icons))
        writer.add(icon);
    if (writer.pixelBytes() > maxFileBytes) {
        parts.fault = "its icons overlap too much: their pictures would hold more than 1 GiB";
        return parts;
    }
    parts.pictures = writer.pictures();
    parts.rest = restOf(library, icons);
    parts.text = "; K7 icon library\n\n[Library]\n";
    if (library.size() != writer.naturalBytes())
        parts.text += "bytes=" + QByteArray::number(library.size()) + '\n';
    if (!parts.rest.isEmpty())
        parts.text += "rest=" + QByteArray(restName) + '\n';
    parts.text += writer.text();
    return parts;
}

QByteArray pngOf(const IconRecord &icon)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    icon::toImage(icon, false).save(&buffer, "PNG");
    return png;
}

namespace {

/// A group of the text.
struct Group
{
    int line; ///< of its first key
    QString name;
    QMap<QString, QString> values;
};

/// A library while it is put together from its text.
class Builder
{
public:
    explicit Builder(const Loader &load) : m_load(load) {}

    Library build(const QByteArray &text)
    {
        for (const Group &group : groupsOf(text)) {
            if (m_fault.isEmpty())
                m_fault = group.name == libraryGroup ? takeLibrary(group) : takeIcon(group);
            if (!m_fault.isEmpty())
                return {
                    {}, 0, QString("line %1, [%2]: %3").arg(group.line).arg(group.name, m_fault)};
        }
        return m_fault.isEmpty() ? laidOut() : Library{{}, 0, m_fault};
    }

private:
    struct Placed
    {
        IconRecord icon;
        int address;
        int line;
    };

    QVector<Group> groupsOf(const QByteArray &text)
    {
        const iniText::Parsed parsed = iniText::parse(text);
        if (parsed.badLine > 0)
            m_fault =
                QString("line %1 is neither a group, a key nor a comment").arg(parsed.badLine);
        for (const iniText::Group &group : parsed.emptyGroups)
            if (m_fault.isEmpty() && group.name != libraryGroup)
                m_fault = QString("line %1, [%2]: it has no key").arg(group.line).arg(group.name);
        QVector<Group> groups;
        for (const iniText::Assignment &assignment : parsed.assignments) {
            if (groups.isEmpty() || groups.last().name != assignment.group)
                groups.append({assignment.line, assignment.group, {}});
            QString &value = groups.last().values[assignment.key];
            if (!value.isNull())
                m_fault = QString("line %1: %2 stands there twice")
                              .arg(assignment.line)
                              .arg(assignment.key);
            value = assignment.value;
        }
        return m_fault.isEmpty() ? groups : QVector<Group>();
    }

    static QString unknownKey(const Group &group, const QStringList &known)
    {
        for (const QString &key : group.values.keys())
            if (!known.contains(key))
                return key + " is no key; known are " + known.join(", ");
        return {};
    }

    QString takeLibrary(const Group &group)
    {
        if (group.values.contains("bytes")) {
            m_bytes = wholeNumber(group.values.value("bytes"), 0, maxFileBytes).value_or(0);
            if (m_bytes < icoLibrary::indexBytes)
                return "bytes is not 262144 to 1073741824";
        }
        if (group.values.contains("rest")) {
            m_rest = m_load(group.values.value("rest"));
            if (m_rest.isNull())
                return group.values.value("rest") + " cannot be read";
        }
        return unknownKey(group, {"bytes", "rest"});
    }

    QString takeIcon(const Group &group)
    {
        const auto position = wholeNumber(group.name, 0, IconRecord::maxPosition);
        if (!position)
            return "it is neither Library nor an icon, 0 to 32767";
        if (m_positions.contains(*position))
            return "the icon stands there twice";
        m_positions.insert(*position);
        Placed placed{IconRecord(), m_next, group.line};
        for (const QString &fault : {unknownKey(group, {"picture", "size", "keyColor", "address"}),
                                     takeSize(group, placed.icon), takeKeyColor(group, placed.icon),
                                     takeAddress(group, placed.address)})
            if (!fault.isEmpty())
                return fault;
        placed.icon.position = *position;
        m_next = endOf(placed.address, placed.icon);
        m_end = qMax(m_end, m_next);
        m_icons.append(placed);
        return {};
    }

    /// An icon has either a picture, or a size with a side of 0.
    QString takeSize(const Group &group, IconRecord &icon)
    {
        if (group.values.contains("picture") == group.values.contains("size"))
            return "it needs either a picture or a size";
        if (group.values.contains("picture"))
            return takePicture(group.values.value("picture"), icon);
        const QStringList sides = group.values.value("size").split('x');
        const auto width = wholeNumber(sides.value(0), 0, IconRecord::maxSide);
        const auto height = wholeNumber(sides.value(1), 0, IconRecord::maxSide);
        if (sides.size() != 2 || !width || !height || *width * *height != 0)
            return "size is not that of an icon without pixels, such as 0x5";
        icon.width = *width;
        icon.height = *height;
        icon.entry = icon::entryOf(*width, *height, {});
        return {};
    }

    QString takePicture(const QString &name, IconRecord &icon)
    {
        // Icons that share a picture share its pixels here, too.
        const auto known = m_pictures.constFind(name);
        if (known != m_pictures.constEnd()) {
            icon = *known;
            return {};
        }
        const QByteArray content = m_load(name);
        if (content.isNull())
            return name + " cannot be read";
        const QImage image = picture::decode(content);
        if (image.isNull())
            return name + " is no picture that can be used";
        if (image.width() > IconRecord::maxSide || image.height() > IconRecord::maxSide)
            return name + " is larger than 1023 x 1023";
        icon = icon::fromImage(0, image);
        m_pictures.insert(name, icon);
        return {};
    }

    static QString takeKeyColor(const Group &group, IconRecord &icon)
    {
        if (!group.values.contains("keyColor"))
            return {};
        const auto digits = hexText::digitsOf(group.values.value("keyColor"));
        if (!digits || digits->size() != 4)
            return "keyColor is not 4 hexadecimal digits";
        icon.entry.replace(6, 2, QByteArray::fromHex(*digits));
        return {};
    }

    static QString takeAddress(const Group &group, int &address)
    {
        if (group.values.contains("address")) {
            const auto given =
                wholeNumber(group.values.value("address"), 0, icoLibrary::maxAddress);
            if (!given)
                return "address is not 0 to 0xFFFFFFF";
            address = *given;
        }
        return address <= icoLibrary::maxAddress ? QString() : "the icons do not fit into one file";
    }

    Library laidOut() const
    {
        const qint64 natural = qMax(2 * qint64{m_end}, qint64{m_rest.size()});
        if (m_bytes > 0 && m_bytes < natural)
            return {{}, 0, QString("the icons and the rest take %1 bytes").arg(natural)};
        QByteArray library = m_rest.leftJustified(static_cast<int>(qMax(natural, m_bytes)), '\0');
        for (const Placed &placed : m_icons)
            library.replace(2 * placed.address, placed.icon.pixelBytes(), placed.icon.pixels());
        // The index last: an icon that lies in it must not change it.
        for (const Placed &placed : m_icons)
            library.replace(placed.icon.position * icoLibrary::entryBytes, icoLibrary::entryBytes,
                            icoLibrary::entryAt(placed.icon, static_cast<quint32>(placed.address)));
        return {library, m_icons.size(), readingFault(library)};
    }

    /// How `library` would be read otherwise than the text says; empty when it would not.
    QString readingFault(const QByteArray &library) const
    {
        QVector<IconRecord> icons;
        const bool isWhole = icoLibrary::read(library, icons);
        QHash<int, const IconRecord *> read;
        for (const IconRecord &icon : qAsConst(icons))
            read.insert(icon.position, &icon);
        for (const Placed &placed : m_icons) {
            const IconRecord *icon = read.value(placed.icon.position);
            if (!icon || icon->pixels() != placed.icon.pixels())
                return QString("line %1, [%2]: the icon would not be read as it is here; pixels "
                               "lie on other pixels or on the index, or its size is 0x0")
                    .arg(placed.line)
                    .arg(placed.icon.position);
        }
        return isWhole && icons.size() == m_icons.size()
                   ? QString()
                   : "pixels, or the rest, lie on the index where the text has no icon";
    }

    const Loader &m_load;
    QString m_fault;
    QSet<int> m_positions;
    QHash<QString, IconRecord> m_pictures;
    QVector<Placed> m_icons;
    QByteArray m_rest;
    qint64 m_bytes = 0; ///< 0: as many as it takes
    int m_next = firstAddress;
    int m_end = firstAddress;
};

} // namespace

Library toLibrary(const QByteArray &text, const Loader &load)
{
    return Builder(load).build(text);
}

} // namespace icoText
