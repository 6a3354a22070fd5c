# paperline_condition_texts(FILE): writes the C++ table of the sentences that data sources share with
# the application, from its language folders. A folder or a text that is missing leaves a gap, where
# sources speak English.
function(paperline_condition_texts file)
    # Condition code and the key of its sentence.
    set(conditions
        TWCC_LOWMEMORY=ShowNoMem
        TWCC_MAXCONNECTIONS=SourceBusy
        TWCC_OPERATIONERROR=SourceNotOpened
        conditionWorkerHung=SourceNotOpened
        TWCC_CHECKDEVICEONLINE=SourceNotOpened
        TWCC_BADVALUE=SourceRefusedOption
        TWCC_DENIED=SourceDenied
        TWCC_PAPERJAM=SourcePaperJam
        TWCC_PAPERDOUBLEFEED=SourceDoubleFeed
        TWCC_INTERLOCK=SourceCoverOpen
        TWCC_NOMEDIA=SourceNoPaper)
    set(language_table "${PROJECT_SOURCE_DIR}/ui/LanguageTable.h")
    file(STRINGS "${language_table}" folders ENCODING UTF-8 REGEX "^    {\"[A-Za-z-]+\\.lproj\"")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${language_table}")
    set(condition_rows "")
    foreach(line IN LISTS folders)
        string(REGEX REPLACE "^    {\"([A-Za-z-]+\\.lproj)\".*$" "\\1" folder "${line}")
        set(strings "${PROJECT_SOURCE_DIR}/resources/${folder}/Localizable.strings")
        set(texts "")
        if(EXISTS "${strings}")
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${strings}")
            file(READ "${strings}" texts)
        endif()
        string(APPEND condition_rows "    Row{ // ${folder}\n")
        foreach(condition IN LISTS conditions)
            string(REGEX REPLACE "^.*=" "" key "${condition}")
            set(text "nullptr")
            if(texts MATCHES "\n\"${key}\" = (\"[^\"\n]*\");")
                set(text "${CMAKE_MATCH_1}")
            endif()
            string(APPEND condition_rows "        ${text},\n")
        endforeach()
        string(APPEND condition_rows "    },\n")
    endforeach()
    list(TRANSFORM conditions REPLACE "=.*$" "" OUTPUT_VARIABLE codes)
    list(JOIN codes ", " condition_codes)
    list(LENGTH conditions condition_count)
    list(LENGTH folders language_count)
    configure_file("${PROJECT_SOURCE_DIR}/sources/framework/ConditionTexts.cpp.in" "${file}" @ONLY)
endfunction()
