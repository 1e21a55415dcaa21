# What is installed, and where. On Linux the programs of a package lie together with the companion
# library in a folder of the package; what people call are links to them. On Windows all lie in one
# folder, as in an installation.
#
# Components: update (users), publish (the maker and whoever looks after databases).
set(TMW_UPDATE_PROGRAMS TmWebUpdate TmSupport TmRollback)
set(TMW_PUBLISH_PROGRAMS tmpublish jetsql)
set(TMW_UPDATE_PAGES docs/locks.md docs/rollback.md docs/security.md docs/settings.md)
set(TMW_PUBLISH_PAGES docs/database_file.md docs/formats.md docs/jetsql.md docs/publishing.md
  docs/security.md)

include(GNUInstallDirs)

# tmw_install_pages(COMPONENT FOLDER): the pages.
function(tmw_install_pages component folder)
  string(TOUPPER ${component} upper)
  install(FILES ${TMW_${upper}_PAGES} DESTINATION ${folder} COMPONENT ${component})
endfunction()

if(WIN32)
  foreach(component update publish)
    string(TOUPPER ${component} upper)
    install(TARGETS ${TMW_${upper}_PROGRAMS} RUNTIME DESTINATION . COMPONENT ${component})
    tmw_install_pages(${component} docs)
  endforeach()
  install(TARGETS companion RUNTIME DESTINATION . COMPONENT update)
  install(FILES LICENSE CHANGELOG.md DESTINATION . COMPONENT update)
  install(DIRECTORY docs/ru DESTINATION docs COMPONENT update)
  return()
endif()

# tmw_install_package(COMPONENT): the programs with their library, links to them, pages, completion.
function(tmw_install_package component)
  string(TOUPPER ${component} upper)
  set(programs ${TMW_${upper}_PROGRAMS})
  set(folder ${CMAKE_INSTALL_LIBEXECDIR}/tamrin-${component})
  set(doc ${CMAKE_INSTALL_DATADIR}/doc/tamrin-${component})
  install(TARGETS ${programs} RUNTIME DESTINATION ${folder} COMPONENT ${component})
  install(TARGETS companion LIBRARY DESTINATION ${folder} COMPONENT ${component})
  file(RELATIVE_PATH way /${CMAKE_INSTALL_BINDIR} /${folder})
  foreach(program IN LISTS programs)
    set(link ${PROJECT_BINARY_DIR}/links/${program})
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/links)
    file(CREATE_LINK ${way}/${program} ${link} SYMBOLIC)
    install(FILES ${link} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
    tmw_man_page(${program} page)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
    install(FILES packaging/completion.bash RENAME ${program}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT ${component})
  endforeach()
  tmw_install_pages(${component} ${doc})
endfunction()

include(cmake/man_pages.cmake)
tmw_install_package(update)
tmw_install_package(publish)
install(DIRECTORY docs/ru DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tamrin-update COMPONENT update)
install(FILES packaging/tamrin-update.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT update)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES src/ui/pictures/program.svg RENAME tamrin-update.svg
  DESTINATION ${icons}/scalable/apps COMPONENT update)
foreach(size 16 24 32 48 64 256)
  install(FILES ${PROJECT_BINARY_DIR}/pictures/program-${size}.png RENAME tamrin-update.png
    DESTINATION ${icons}/${size}x${size}/apps COMPONENT update)
endforeach()
install(FILES packaging/machine.reg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tamrin-update/examples COMPONENT update)
