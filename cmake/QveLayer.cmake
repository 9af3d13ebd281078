# One folder under src/, one target.
#
#   qve_layer(qve_storage USES qve_primitives LIBRARIES ICU::uc OPTIONS -O3)
#
# Globs the folder's own sources (not its sub-folders), lists its headers as a file set, and links the layers it uses
# publicly: what a layer's headers mention, its users see.
function(qve_layer name)
    cmake_parse_arguments(LAYER "" "" "USES;LIBRARIES;OPTIONS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE ${LAYER_USES} ${LAYER_LIBRARIES})
        return()
    endif()
    add_library(${name} ${sources})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${CMAKE_SOURCE_DIR}/src FILES ${headers})
    target_link_libraries(${name} PUBLIC ${LAYER_USES} ${LAYER_LIBRARIES})
    # Optimisation beyond -O2 is for the release: elsewhere it would only cost build time.
    target_compile_options(${name} PRIVATE "$<$<CONFIG:Release>:${LAYER_OPTIONS}>")
    qve_warnings(${name})
endfunction()

# The tests of one layer: the folder's *_test.cpp, linked against that layer alone.
#
#   qve_layer_tests(qve_types LIBRARIES ICU::uc LABELS threads)
#
# With the label "threads" the program is part of the target threads_tests, which the thread sanitizer build is for.
function(qve_layer_tests layer)
    cmake_parse_arguments(TESTS "" "" "USES;LIBRARIES;LABELS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(NOT sources)
        return()
    endif()
    set(name ${layer}_tests)
    add_executable(${name} ${sources})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${layer} ${TESTS_USES} ${TESTS_LIBRARIES} GTest::gmock GTest::gtest_main)
    qve_warnings(${name})
    if(QVE_SANITIZE STREQUAL "thread")
        target_link_libraries(${name} PRIVATE qve_tbb_for_tsan)
    endif()
    gtest_discover_tests(${name} PROPERTIES LABELS "${TESTS_LABELS}" DISCOVERY_MODE PRE_TEST)
    if("threads" IN_LIST TESTS_LABELS)
        set_property(GLOBAL APPEND PROPERTY QVE_THREADS_TESTS ${name})
    endif()
endfunction()
