# Called by cpack when the files of the packages are in their places: what Debian wants otherwise than other systems.

file(GLOB roots LIST_DIRECTORIES true "${CPACK_TEMPORARY_DIRECTORY}/*")
foreach(root IN LISTS roots)
    if(NOT IS_DIRECTORY "${root}/usr")
        continue()
    endif()
    get_filename_component(package "${root}" NAME)
    set(share "${root}/usr/share")

    if(EXISTS "${share}/zsh/site-functions")
        file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")
    endif()

    # The copyright file says it all.
    file(COPY "${CMAKE_CURRENT_LIST_DIR}/copyright" DESTINATION "${share}/doc/${package}")
    file(REMOVE "${share}/doc/${package}/LICENSE")

    # The day of the build, or SOURCE_DATE_EPOCH.
    string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
    file(WRITE "${share}/doc/${package}/changelog"
        "quorvex (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
        "  * Built from the source of Quorvex ${CPACK_PACKAGE_VERSION}.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT} <>  ${now}\n")

    file(GLOB texts "${share}/man/man1/*.1" "${share}/doc/${package}/changelog")
    execute_process(COMMAND gzip -9nf ${texts} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
