# Warnings are errors, on our own sources only.
function(qve_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror
                                             $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual>)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND QVE_SANITIZE)
        # g++ 12 reports uninitialised and out-of-bounds uses inside inlined library code under sanitizers.
        target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized -Wno-array-bounds -Wno-stringop-overflow
                                                 -Wno-stringop-overread -Wno-restrict)
    endif()
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        # g++ holds the warnings; of clang's own these only speak of style.
        target_compile_options(${target} PRIVATE -Wno-overloaded-virtual -Wno-unknown-pragmas -Wno-ignored-attributes
                                                 -Wno-bitwise-conditional-parentheses
                                                 -Wno-bitwise-instead-of-logical)
    endif()
endfunction()
