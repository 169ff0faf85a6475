#pragma once

#include <bitset>

namespace k7 {

/// What the tool has written into the upper half of VP memory, from which the module takes
/// pictures, icons and JPEG files.
///
/// A write to its first word begins a new staging. The last chunk of a file may be too short to
/// fill its place, so that an area counts as staged when something was sent to each 64 words of it.
class StagingArea
{
public:
    static constexpr int begin = 0x8000; ///< VP address
    static constexpr int end = 0x10000;

    /// `count` words, perhaps none, were sent to `address`.
    void note(int address, int count)
    {
        if (address < begin)
            return;
        if (address == begin)
            clear();
        const int last = address + (count > 0 ? count - 1 : 0);
        for (int page = pageOf(address); page <= pageOf(last); ++page)
            m_pages.set(static_cast<size_t>(page));
        if (address + count > m_writtenEnd)
            m_writtenEnd = address + count;
    }
    /// Whether the `count` words from `address` on lie in the area and were staged.
    bool holds(int address, int count) const
    {
        if (address < begin || count < 1 || count > end - address)
            return false;
        for (int page = pageOf(address); page <= pageOf(address + count - 1); ++page)
            if (!m_pages.test(static_cast<size_t>(page)))
                return false;
        return true;
    }
    /// How many words from `address` on were sent; 0 outside of what was.
    int wordsFrom(int address) const
    {
        return address >= begin && address < m_writtenEnd ? m_writtenEnd - address : 0;
    }
    /// What is staged has been moved.
    void clear() { *this = StagingArea(); }

private:
    static constexpr int pageWords = 64;
    static int pageOf(int address) { return (address - begin) / pageWords; }

    std::bitset<(end - begin) / pageWords> m_pages;
    int m_writtenEnd = begin;
};

} // namespace k7
