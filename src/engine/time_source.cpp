#include "engine/time_source.h"

#include <chrono>

qint64 TimeSource::ofTheSystem()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::nanoseconds(time).count();
}
