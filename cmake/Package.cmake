# `cpack` in a build folder of the preset "release" makes a Debian package of the three programs.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tesserine)
set(CPACK_PACKAGE_VENDOR "Tesserine contributors")
set(CPACK_PACKAGE_CONTACT "Tesserine contributors <packages@${TESSERINE_DOMAIN}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/DebianFiles.cmake")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Keeps notes and tasks in one library on your own disk: a window, and the
same from a terminal. Searches them, reminds of them, and exports them in
forms that any program can read.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # the libraries, found by what the programs link
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, shared-mime-info")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "hunspell-en-us, dbus-user-session")

include(CPack)
