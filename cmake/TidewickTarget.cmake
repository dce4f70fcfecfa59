# What every target of ours compiles with: strict Qt, strict warnings, includes from the top folder.
# Nothing that Qt gave up by 6.8 is there, and a use of what it gives up later is a warning.
option(TIDEWICK_WERROR "Treat warnings as errors" OFF)

function(tidewick_target name)
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion
        $<$<BOOL:${TIDEWICK_WERROR}>:-Werror>)
    target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII
        QT_NO_CAST_TO_ASCII QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
        QT_DISABLE_DEPRECATED_BEFORE=0x060800)
endfunction()
