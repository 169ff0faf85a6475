#pragma once

namespace k7 {

/// The rate in bit/s that is set for the terminal behind `descriptor`, the odd ones as well; 0 when
/// there is none. Either end of a pair of pseudo-terminals tells what the tool has set.
int lineRate(int descriptor);

} // namespace k7
