# Run by CPack (CPACK_PRE_BUILD_SCRIPTS) on the staged tree of the Debian
# package, after installing and before packing: adds what Debian asks of a
# binary package beyond the installed files, namely the compressed changelog
# and the copyright file in /usr/share/doc/cubrix and the lintian overrides,
# and compresses the manual pages. A plain `cmake --install` keeps its manual
# pages uncompressed.
set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
if(NOT IS_DIRECTORY "${root}/bin")
  message(FATAL_ERROR "No staged programs in ${root}")
endif()
set(doc "${root}/share/doc/${CPACK_PACKAGE_NAME}")
file(MAKE_DIRECTORY "${doc}")
file(COPY "${CPACK_CUBRIX_DEBIAN_DIR}/copyright" DESTINATION "${doc}")
file(MAKE_DIRECTORY "${root}/share/lintian/overrides")
file(COPY_FILE "${CPACK_CUBRIX_DEBIAN_DIR}/lintian-overrides" "${root}/share/lintian/overrides/${CPACK_PACKAGE_NAME}")

# The changelog's one entry is this version, dated by the AppStream release of
# the same version, so that the package is the same whenever it is built.
set(metainfo "${CPACK_CUBRIX_METAINFO}")
file(STRINGS "${metainfo}" releases REGEX "<release ")
set(date "")
foreach(release IN LISTS releases)
  string(FIND "${release}" "version=\"${CPACK_PACKAGE_VERSION}\"" at)
  if(at GREATER -1 AND release MATCHES "date=\"([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])\"")
    set(date "${CMAKE_MATCH_1}")
  endif()
endforeach()
if(NOT date)
  message(FATAL_ERROR "${metainfo} has no dated <release version=\"${CPACK_PACKAGE_VERSION}\">")
endif()
execute_process(COMMAND date -u -R -d "${date} 00:00:00 UTC" OUTPUT_VARIABLE when
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(version "${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
file(WRITE "${doc}/changelog.Debian"
     "${CPACK_PACKAGE_NAME} (${version}) unstable; urgency=medium\n\n"
     "  * ${CPACK_CUBRIX_RELEASE_NAME}.\n\n"
     " -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${when}\n")
execute_process(COMMAND gzip -9nf "${doc}/changelog.Debian" COMMAND_ERROR_IS_FATAL ANY)

file(GLOB pages "${root}/share/man/man[1-9]/*.[1-9]")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9nf "${page}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
