#pragma once

#include "crc/crc_check_item.h"
#include "engine/step.h"

/// Asks the module, unit by unit, for the CRC of what it holds. A module that is not done is asked
/// again and again, without a limit.
class CrcComparison final : public Step
{
public:
    explicit CrcComparison(const Line &line);

    const QVector<CrcCheckItem> &items() const { return m_items; }
    /// How many of them the last comparison has the module's answer of.
    int answered() const { return m_index; }
    /// Takes `items` in place of the others, and ends a comparison of those.
    void setItems(const QVector<CrcCheckItem> &items);

    /// Starts with the first item, however far an earlier comparison came. Without items nothing
    /// happens.
    void start();
    void step() override;

protected:
    void rewind() override { m_stage = Stage::Ask; }

private:
    static constexpr quint16 crcAddress = 0x00E0;
    static constexpr quint16 busyMark = 0x5A; // in the high byte of the first word

    enum class Stage { Ask, Read, Compare };

    void ask();
    void read();
    void sendRead();
    void compare();
    /// Whether the answer is there. Strict, the unit is asked for again when it is not.
    bool isAnswered();
    void enter(Stage stage);
    int ticksFor(int bits) const;

    QVector<CrcCheckItem> m_items;
    int m_index = 0;
    Stage m_stage = Stage::Ask;
};
