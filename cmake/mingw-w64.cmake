# Cross-compiles for 64-bit Windows with mingw-w64 (posix threads).
# AMBREL_COMPILER=clang selects clang++ with mingw-w64's headers and libraries.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(AMBREL_TRIPLE x86_64-w64-mingw32)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../lab/run-in-lab --test)
set(CMAKE_RC_COMPILER ${AMBREL_TRIPLE}-windres)
set(CMAKE_OBJCOPY ${AMBREL_TRIPLE}-objcopy)
set(CMAKE_STRIP ${AMBREL_TRIPLE}-strip)
set(CMAKE_FIND_ROOT_PATH /usr/${AMBREL_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES AMBREL_COMPILER)

execute_process(COMMAND ${AMBREL_TRIPLE}-g++-posix -dumpversion
                OUTPUT_VARIABLE gcc_version OUTPUT_STRIP_TRAILING_WHITESPACE)
set(AMBREL_GCC_FOLDER /usr/lib/gcc/${AMBREL_TRIPLE}/${gcc_version})

if(AMBREL_COMPILER STREQUAL "clang")
    # clang does not find the C++ headers of mingw-w64's posix-threads variant by itself.
    set(cxx_headers ${AMBREL_GCC_FOLDER}/include/c++)
    set(CMAKE_CXX_COMPILER clang++)
    set(CMAKE_CXX_COMPILER_TARGET ${AMBREL_TRIPLE})
    set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${cxx_headers} -isystem ${cxx_headers}/${AMBREL_TRIPLE}")
    set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
else()
    set(CMAKE_CXX_COMPILER ${AMBREL_TRIPLE}-g++-posix)
endif()
