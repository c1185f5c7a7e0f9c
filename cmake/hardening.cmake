# Compiler and linker options of all programs: one file without exceptions or RTTI, protected stack,
# ASLR with high entropy, DEP, no time stamp, so that two builds are equal to the byte.
add_library(ambrel_hardening INTERFACE)
target_compile_definitions(ambrel_hardening INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX STRICT
    WINVER=0x0A00 _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000007)
if(MSVC)
    # Links the runtime statically.
    set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
    # CMake enables exceptions, and a contradicting second option causes a warning.
    string(REPLACE "/EHsc" "" CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS}")
    # The format checks need the conforming preprocessor, about which older Windows headers warn (C5105).
    target_compile_options(ambrel_hardening INTERFACE /Zc:preprocessor /wd5105 /EHs-c- /GR- /GS /guard:cf)
    target_compile_definitions(ambrel_hardening INTERFACE _HAS_EXCEPTIONS=0)
    # DEPENDENTLOADFLAG 0x800: imported DLLs come from System32.
    target_link_options(ambrel_hardening INTERFACE
        /HIGHENTROPYVA /DYNAMICBASE /NXCOMPAT /CETCOMPAT /guard:cf /DEPENDENTLOADFLAG:0x800 /Brepro /OPT:REF)
else()
    target_compile_options(ambrel_hardening INTERFACE
        -fno-exceptions -fno-rtti -fstack-protector-strong -ffunction-sections -fdata-sections
        -ffp-contract=off -fno-ident $<$<CONFIG:Release>:-g1>
        -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
    target_link_options(ambrel_hardening INTERFACE
        -static -fstack-protector-strong -Wl,--gc-sections
        -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va -Wl,--no-insert-timestamp -Wl,--tsaware
        -Wl,--major-os-version=10 -Wl,--minor-os-version=0
        -Wl,--major-subsystem-version=6 -Wl,--minor-subsystem-version=2)
endif()
