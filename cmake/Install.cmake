# What is installed. Three parts: what programs need to run, what they need to be built, and the command line tool.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/PDFSettings)

# Libraries find each other, and the tool finds them, wherever all of it is put; or where they are, if
# no prefix moves them. What is built has the same path, which also leads to the build's own libraries:
# CMake would end a path of the build's alone with an empty entry, which stands for the current folder.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(library_path ${CMAKE_INSTALL_LIBDIR})
else()
    file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set(library_path "$ORIGIN/${bin_to_lib}")
endif()
set(tool_path "$ORIGIN/../lib" "${library_path}")
list(REMOVE_DUPLICATES tool_path)
set_target_properties(PDFSettingsHost PROPERTIES
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN")
set_target_properties(joboptions PROPERTIES
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "${tool_path}")

install(TARGETS BIBRuntime PDFSettingsHost
    EXPORT PDFSettingsTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT runtime
        NAMELINK_COMPONENT development)
install(TARGETS PDFSettingsPublic EXPORT PDFSettingsTargets)
install(TARGETS BIBConformance bib-conformance
    EXPORT PDFSettingsTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT development)
install(FILES conformance/bib-conformance.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT development)
install(TARGETS PDFSettings
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${PDFSETTINGS_MODULE_FOLDER}
        COMPONENT runtime)

# Two headers are between the parts of this project only.
install(DIRECTORY public/include/api
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/pdfsettings/tables
    COMPONENT development
    PATTERN UnicodeEncoding.h EXCLUDE
    PATTERN SettingsPlaces.h EXCLUDE)
install(DIRECTORY conformance/include/bib
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/pdfsettings/tables
    COMPONENT development)
install(DIRECTORY host/include/pdfsettings document/include/pdfsettings
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)

install(EXPORT PDFSettingsTargets
    NAMESPACE PDFSettings::
    DESTINATION ${package_folder}
    COMPONENT development)
configure_package_config_file(
    cmake/PDFSettingsConfig.cmake.in ${PDFSettings_BINARY_DIR}/PDFSettingsConfig.cmake
    INSTALL_DESTINATION ${package_folder}
    PATH_VARS CMAKE_INSTALL_LIBDIR
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PDFSettings_BINARY_DIR}/PDFSettingsConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(
    FILES
        ${PDFSettings_BINARY_DIR}/PDFSettingsConfig.cmake
        ${PDFSettings_BINARY_DIR}/PDFSettingsConfigVersion.cmake
    DESTINATION ${package_folder}
    COMPONENT development)

# A folder as pkg-config is to see it. Below the prefix it is relative to the position of the file
# itself, so that all of it can be moved; what has an absolute place stays there.
function(set_pkg_config_folder variable folder)
    if(IS_ABSOLUTE ${folder})
        set(${variable} ${folder} PARENT_SCOPE)
    else()
        set(${variable} "\${prefix}/${folder}" PARENT_SCOPE)
    endif()
endfunction()

set_pkg_config_folder(PKG_CONFIG_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set_pkg_config_folder(PKG_CONFIG_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(PKG_CONFIG_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH lib_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    string(REGEX REPLACE "/$" "" lib_to_prefix ${lib_to_prefix})
    set(PKG_CONFIG_PREFIX "\${pcfiledir}/${lib_to_prefix}")
endif()
foreach(name IN ITEMS pdfsettings pdfsettings-runtime)
    configure_file(cmake/${name}.pc.in ${PDFSettings_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PDFSettings_BINARY_DIR}/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
endforeach()

install(TARGETS joboptions RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
function(install_text file folder name)
    install(FILES ${JOBOPTIONS_TEXTS_FOLDER}/${file}
        DESTINATION ${folder}
        COMPONENT tool
        RENAME ${name})
endfunction()
install_text(joboptions.1 ${CMAKE_INSTALL_MANDIR}/man1 joboptions.1)
install_text(joboptions.bash ${CMAKE_INSTALL_DATADIR}/bash-completion/completions joboptions)
install_text(joboptions.zsh ${CMAKE_INSTALL_DATADIR}/zsh/site-functions _joboptions)
install_text(joboptions.fish ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d joboptions.fish)

# Sets to start from, and what users of the tool read.
install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/joboptions COMPONENT tool)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/joboptions COMPONENT tool)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/joboptions COMPONENT tool)

install(DIRECTORY examples data docs
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT development)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT development)
