# The Debian packages, one a component:
#   cmake --build --preset linux-release && (cd build/linux-release && cpack)
# SOURCE_DATE_EPOCH, as scripts/release.sh sets it, makes them the same bytes each time.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tamrin)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The TmWebUpdate authors <maintainers@update.tamrin.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL update publish)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_UPDATE_PACKAGE_NAME tamrin-update)
set(CPACK_DEBIAN_UPDATE_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_UPDATE_PACKAGE_RECOMMENDS "ca-certificates, pkexec")
set(CPACK_COMPONENT_UPDATE_DESCRIPTION "Web update of the accounting product Tamrin
Brings an installation of Tamrin up to the release on the update server:
program files, dictionaries and the user's database, which is backed up first.
Only what differs is downloaded; an interrupted download goes on.
.
The package's own files are never replaced by an update: it replaces those of
the product's folder, the product's own copy of the updater among them.")

set(CPACK_DEBIAN_PUBLISH_PACKAGE_NAME tamrin-publish)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SUGGESTS "minisign")
set(CPACK_COMPONENT_PUBLISH_DESCRIPTION "Tools that publish Tamrin updates and look after databases
tmpublish makes releases for any web server, checks, compares, signs and
announces them. jetsql looks after Jet 4 databases: structure, statements,
rows and health.")
# What dpkg sees first is the first line.
foreach(component UPDATE PUBLISH)
  set(CPACK_DEBIAN_${component}_DESCRIPTION ${CPACK_COMPONENT_${component}_DESCRIPTION})
endforeach()

# The two files that every package of Debian has.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
foreach(component update publish)
  set(folder ${PROJECT_BINARY_DIR}/debian/${component})
  add_custom_command(OUTPUT ${folder}/changelog.gz
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/packaging/make_changelog.py
      ${PROJECT_SOURCE_DIR}/CHANGELOG.md tamrin-${component} ${CPACK_PACKAGE_CONTACT} ${folder}/changelog
    COMMAND ${GZIP} -9nf ${folder}/changelog
    DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/packaging/make_changelog.py
    VERBATIM)
  add_custom_target(${component}_changelog ALL DEPENDS ${folder}/changelog.gz)
  install(FILES ${folder}/changelog.gz packaging/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tamrin-${component} COMPONENT ${component})
endforeach()
include(CPack)
