# Helpers shared by the layer, test and benchmark folders.

# spindeck_test(<name> SOURCES <files...> LIBRARIES <targets...>)
# One GoogleTest program per layer, each test run as its own CTest case. The shared main
# fails any test that leaves a platform object alive.
function(spindeck_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE testsupport ${ARG_LIBRARIES})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# spindeck_benchmark(<name> SOURCES <files...> LIBRARIES <targets...>)
function(spindeck_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE benchmark::benchmark ${ARG_LIBRARIES})
endfunction()

# spindeck_publish_headers(<target> <include path> <folder or header>)
# Makes <folder> (and nothing beside it) visible to the target's users as <include path>, so
# that a library publishes only its own headers although its folder sits among others: the
# build tree gets a folder per library that holds links to the library's own. A library whose
# folder holds other libraries' folders names its headers one by one.
function(spindeck_publish_headers target path folder)
  set(root "${CMAKE_BINARY_DIR}/published/${target}")
  get_filename_component(parent "${root}/${path}" DIRECTORY)
  file(MAKE_DIRECTORY "${parent}")
  file(CREATE_LINK "${folder}" "${root}/${path}" SYMBOLIC)
  target_include_directories(${target} PUBLIC "${root}")
endfunction()
