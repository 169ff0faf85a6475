#include "simulator/module_state.h"

namespace k7 {

namespace {

struct InitialWord
{
    int address;
    quint16 value;
};

constexpr InitialWord initialWords[] = {
    {0x00, 0x0123}, {0x01, 0x4567}, {0x02, 0x89AB}, {0x03, 0xCDEF}, // device ID
    {0x0F, 0x4521},                                                 // GUI 4.5, OS 2.1
    {0x30, 0x8000},                                                 // supply voltage, 2400 mV
    {0x7C, 0x5A4F}, {0x7D, 0x4C54}, {0x7E, 0x5F53}, {0x7F, 0x4554}, // SD folder "ZOLT_SET"
    {0x81, 0x0038},                                                 // configuration
    {0x82, 0x6414}, {0x83, 0x003C},                                 // LED: 100, 20, after 60
};

} // namespace

ModuleState::ModuleState() : vp(vpWords)
{
    for (const InitialWord &word : initialWords)
        vp[word.address] = word.value;
}

} // namespace k7
