#pragma once

#include <QtGlobal>

#include <random>

namespace k7 {

/// Random numbers that are the same for the same seed on every system.
class Random
{
public:
    explicit Random(quint32 seed) : m_engine(seed) {}

    /// A number from 0 to `limit`, which is not negative.
    int upTo(int limit) { return static_cast<int>(m_engine() % (static_cast<quint32>(limit) + 1)); }
    bool happens(int perMille) { return upTo(999) < perMille; }

private:
    std::mt19937 m_engine; // the distributions of the library differ between systems
};

} // namespace k7
