# The installed package: libraries, exported headers, CMake package, pkg-config file, the tool, documents, examples.
include(CMakePackageConfigHelpers)

install(TARGETS tarn_service tarn_keywords deckmanager EXPORT TarnDeckManagerTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS deckman RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/deckmanager DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY components/tarn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h"
        PATTERN "detail" EXCLUDE PATTERN "loader" EXCLUDE)
install(EXPORT TarnDeckManagerTargets NAMESPACE Tarn:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnDeckManager)

configure_package_config_file(cmake/TarnDeckManagerConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/TarnDeckManagerConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnDeckManager)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/TarnDeckManagerConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TarnDeckManagerConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/TarnDeckManagerConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnDeckManager)
# The pkg-config file finds its prefix from where it lies, so that an installation can be moved.
file(RELATIVE_PATH DECK_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/tarn-deckmanager.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tarn-deckmanager.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarn-deckmanager.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# As in the sources, so that links between documents lead where they should.
set(deckDocs ${CMAKE_INSTALL_DATAROOTDIR}/doc/tarn-deckmanager)
install(FILES README.md DESTINATION ${deckDocs})
install(DIRECTORY docs examples DESTINATION ${deckDocs})

install(FILES ${CMAKE_BINARY_DIR}/tools/deckman/deckman.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
set(deckCompletion ${PROJECT_SOURCE_DIR}/tools/deckman/completion)
install(FILES ${deckCompletion}/deckman.bash RENAME deckman
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
install(FILES ${deckCompletion}/deckman.fish DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d)
# Where zsh looks by itself depends on who has installed: a package, or somebody in a place of their own.
install(CODE "
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    set(deckZsh vendor-completions)
  else()
    set(deckZsh site-functions)
  endif()
  file(INSTALL \"${deckCompletion}/_deckman\"
       DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATAROOTDIR}/zsh/\${deckZsh}\")")

# A stripped installation has no debug information in its static libraries either.
foreach(library tarn_service tarn_keywords deckmanager)
  install(CODE "
    if(CMAKE_INSTALL_DO_STRIP)
      execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:${library}>\")
    endif()")
endforeach()
