include(${CMAKE_CURRENT_LIST_DIR}/zorvTargets.cmake)

# zorv.hpp wants C++20. Programs in C alone use the target too, and know no standard of C++.
get_property(languages GLOBAL PROPERTY ENABLED_LANGUAGES)
if(CXX IN_LIST languages)
  set_property(TARGET zorv::zorv PROPERTY INTERFACE_COMPILE_FEATURES cxx_std_20)
endif()
