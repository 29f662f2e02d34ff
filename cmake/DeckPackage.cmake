# cpack -G DEB: one Debian package of all that is installed. What a host needs to build against the static libraries is
# recommended, so that who wants the tool alone can do without.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarn-deckmanager)
set(CPACK_PACKAGE_VENDOR "DeckManager")
set(CPACK_PACKAGE_CONTACT "DeckManager maintainers <maintainers@deckmanager.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Library and command line for reservoir simulation decks")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A C++ library that gives a program a live, editable model of a reservoir
simulation deck, and deckman, the command line on top of it, which lists,
shows, searches, checks, compares, edits and copies decks.")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "g++, libboost-filesystem-dev, libfmt-dev, libpugixml-dev")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cmake, pkg-config")
include(CPack)
