# A program that is linked statically with musl starts much faster than one with glibc. Debian offers
# musl beside its own C library (musl-tools). A C++ program without exceptions, run-time types and
# allocation needs only the headers of libstdc++, which work with both.
string(REPLACE "-gnu" "-musl" musl_triplet "${CMAKE_LIBRARY_ARCHITECTURE}")
set(musl_lib /usr/lib/${musl_triplet})

# TIDEWICK_MUSL: whether the supplied lsof and ps are linked with musl. The default is ON if musl is installed.
if(NOT DEFINED TIDEWICK_MUSL)
    set(TIDEWICK_MUSL OFF)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND EXISTS ${musl_lib}/rcrt1.o
            AND NOT CMAKE_CXX_FLAGS_DEBUG MATCHES "-fsanitize")
        set(TIDEWICK_MUSL ON)
    endif()
endif()

# tidewick_use_musl(TARGET) - builds the program with musl.
function(tidewick_use_musl target)
    # g++'s own C++ headers, then musl's, then g++'s for C; never the system's.
    set(cxx_headers ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
    set(gcc_headers ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
    list(FILTER cxx_headers INCLUDE REGEX "/c\\+\\+/")
    list(FILTER gcc_headers INCLUDE REGEX "/lib/gcc/[^+]*/include$")
    set(headers ${cxx_headers} /usr/include/${musl_triplet} ${gcc_headers})
    list(TRANSFORM headers PREPEND -isystem)
    # libstdc++'s headers ask glibc's for its version.
    target_compile_options(${target} PRIVATE
        -fno-exceptions -fno-rtti -nostdinc ${headers} "-D__GLIBC_PREREQ(a,b)=0")
    # Nothing here uses the sections that crti.o and crtn.o frame.
    target_link_options(${target} PRIVATE -static-pie -nostdlib ${musl_lib}/rcrt1.o)
    target_link_libraries(${target} PRIVATE ${musl_lib}/libc.a gcc)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()
