# Compiler launcher, linker and the flags that hold for every target.

find_program(QVE_CCACHE ccache)
if(QVE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Objects are the same for every build folder and every clone.
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_NOHASHDIR=1 CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} ${QVE_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()

find_program(QVE_MOLD mold)
if(QVE_MOLD)
    add_link_options(-fuse-ld=mold)
else()
    find_program(QVE_LLD ld.lld)
    if(QVE_LLD)
        add_link_options(-fuse-ld=lld)
    endif()
endif()

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g -D_GLIBCXX_ASSERTIONS")
set(CMAKE_C_FLAGS_DEBUG "-O0 -g")
# Sanitizer builds: line numbers only, light optimisation, assertions on.
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer -D_GLIBCXX_ASSERTIONS")
set(CMAKE_C_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer")

if(QVE_SHARED_LAYERS)
    set(BUILD_SHARED_LIBS ON)
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,-z,defs>)
endif()
