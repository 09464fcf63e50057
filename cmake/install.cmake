# What `cmake --install` puts where. None of it depends on the developer options.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The library keeps its file name, which has neither "lib" nor a version, and opens solver libraries
# from the folder that it was itself loaded from. Files of such names are nothing for the folder
# that all libraries share, and ldconfig would pass over them. So these have a folder of their own,
# and programs a run path to it: CMake and zorv.pc see to that.
set(library_folder ${CMAKE_INSTALL_LIBDIR}/zorv)
install(TARGETS zorv EXPORT zorv LIBRARY DESTINATION ${library_folder}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS easysolver_library exhaustive_library LIBRARY DESTINATION ${library_folder})
install(DIRECTORY include/zorv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# find_package(zorv) gives the target zorv::zorv. Versions are dates; from one year to the next the
# interface may change.
add_library(zorv::zorv ALIAS zorv)
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zorv)
write_basic_package_version_file(zorvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT zorv NAMESPACE zorv:: FILE zorvTargets.cmake DESTINATION ${config_folder})
install(FILES cmake/zorvConfig.cmake ${PROJECT_BINARY_DIR}/zorvConfigVersion.cmake
        DESTINATION ${config_folder})

# zorv.pc finds the rest from where it lies itself.
set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
string(REGEX REPLACE "[^/]+" ".." way_up ${pc_folder})
configure_file(cmake/zorv.pc.in zorv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zorv.pc DESTINATION ${pc_folder})

# Man pages. The example in one of them is a program that the tests run; versions are dates.
string(REPLACE . - release_date ${PROJECT_VERSION})
file(READ examples/quickstart.cpp example)
string(REPLACE \\ \\e example "${example}")
foreach(page zorv.7 libzorv.3)
  string(REGEX MATCH "[0-9]$" section ${page})
  configure_file(docs/man/${page}.in ${page} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.md
        PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN CMakeLists.txt EXCLUDE)
