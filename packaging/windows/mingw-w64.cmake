# Builds for 64-bit Windows with the cross-compiler of Debian's package g++-mingw-w64-x86-64-posix.
# build.sh fills the folder of the libraries; nothing is looked for anywhere else.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# Its threads are those that the C++ standard library needs; the variant "-win32" has none.
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

cmake_path(SET libraries NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../build/windows-libraries)
set(CMAKE_FIND_ROOT_PATH ${libraries}/qt ${libraries}/cli11)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Tests run through it.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/run-in-wine)
