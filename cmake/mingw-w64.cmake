# Cross build for 64-bit Windows with Debian's mingw-w64 (posix threads).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TOOLCHAIN_PREFIX x86_64-w64-mingw32)

set(CMAKE_C_COMPILER ${TOOLCHAIN_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TOOLCHAIN_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${TOOLCHAIN_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TOOLCHAIN_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Programs run without the compiler's DLLs beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# A Qt built for Windows by scripts/build-qt-mingw (the mingw-gui preset):
# TAVENA_QT_MINGW names its folder; empty means the one that script has
# cached. Its moc, uic and rcc are Debian's host tools.
if(DEFINED TAVENA_QT_MINGW)
  if(NOT TAVENA_QT_MINGW)
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../scripts/build-qt-mingw --print-prefix
                    OUTPUT_VARIABLE TAVENA_QT_MINGW OUTPUT_STRIP_TRAILING_WHITESPACE)
  endif()
  if(EXISTS ${TAVENA_QT_MINGW}/lib/cmake/Qt6)
    list(APPEND CMAKE_FIND_ROOT_PATH ${TAVENA_QT_MINGW})
    set(QT_HOST_PATH /usr)
    set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
  endif()
endif()
