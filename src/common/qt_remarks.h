#pragma once

/// From now on Qt's own remarks, such as what a platform does not support, are kept from the user.
/// What is critical, or keeps a window from opening, is told on stderr.
void hideQtRemarks();
