# Every target links ambrel_warnings: warnings are errors.
add_library(ambrel_warnings INTERFACE)
if(MSVC)
    target_compile_options(ambrel_warnings INTERFACE /W4 /w14062 /WX /permissive- /utf-8)
else()
    target_compile_options(ambrel_warnings INTERFACE
        -Werror -Wall -Wextra -Wshadow -Wconversion -Wswitch -Wformat=2 -Wold-style-cast -Wnull-dereference)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # Approximates /W4 of Microsoft's compiler.
        target_compile_options(ambrel_warnings INTERFACE
            -Wshorten-64-to-32 -Wimplicit-int-conversion -Wextra-semi -Wnon-virtual-dtor -Wmicrosoft)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GetProcAddress returns the same pointer type for every function.
        target_compile_options(ambrel_warnings INTERFACE -Wno-cast-function-type)
    endif()
endif()
