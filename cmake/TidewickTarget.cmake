# The options of each of our targets: strict Qt, strict warnings, includes from the top directory.
# APIs that Qt deprecated by 6.8 are not available, and APIs that it deprecates later give a
# warning.
option(TIDEWICK_WERROR "Treat warnings as errors" OFF)

function(tidewick_target name)
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion
        $<$<BOOL:${TIDEWICK_WERROR}>:-Werror>)
    target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII
        QT_NO_CAST_TO_ASCII QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
        QT_DISABLE_DEPRECATED_BEFORE=0x060800)
endfunction()
