# The Debian package, one for all: the headers are of use only with the library, and the library has
# one file name for all versions, so two of them could not be installed together anyway.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The zorv developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "combinatorial optimisation with exact coefficients")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "zorv states combinatorial optimisation problems as polynomials over 0/1, spin
and integer variables, and solves them. This package holds the shared library,
the solver libraries that it opens at run time, the headers for C and C++, and
what CMake and pkg-config need to find them.")
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/compress_man_pages.cmake)
include(CPack)
