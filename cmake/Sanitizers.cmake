if(QVE_SANITIZE)
    add_compile_options(-fsanitize=${QVE_SANITIZE} -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${QVE_SANITIZE})
    if(QVE_FUZZERS)
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
endif()

# Kernels work on what one thread hands them, so the thread sanitizer has nothing to see in them; instrumenting their
# thousands of loops would be most of its build.
set(QVE_KERNEL_OPTIONS "")
if(QVE_SANITIZE STREQUAL "thread")
    set(QVE_KERNEL_OPTIONS -O0 -fno-sanitize=all)
endif()
