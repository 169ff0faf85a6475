#pragma once

/// What a program with windows asks of its system before it makes its application. Each system has
/// a file of its own.
void prepareDesktop();
