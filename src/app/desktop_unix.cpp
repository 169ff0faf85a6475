#include "app/desktop.h"

void prepareDesktop() {}
