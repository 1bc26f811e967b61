# Adds fuzz/ and tests/fuzz/ to a build whose top-level CMakeLists.txt does not list them yet.
# Use: cmake -DCMAKE_PROJECT_INCLUDE=<source>/fuzz/AddFuzzFolders.cmake ...
# Once the top-level file is done, each folder it has not added is read in its scope (both
# files name their sources by CMAKE_CURRENT_LIST_DIR, so they work either way).
function(engine_add_fuzz_folders)
  get_property(added DIRECTORY ${CMAKE_SOURCE_DIR} PROPERTY SUBDIRECTORIES)
  if(NOT "${CMAKE_SOURCE_DIR}/fuzz" IN_LIST added)
    include(${CMAKE_SOURCE_DIR}/fuzz/CMakeLists.txt)
  endif()
  if(ENGINE_BUILD_TESTS AND NOT "${CMAKE_SOURCE_DIR}/tests/fuzz" IN_LIST added)
    include(${CMAKE_SOURCE_DIR}/tests/fuzz/CMakeLists.txt)
  endif()
endfunction()
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL engine_add_fuzz_folders)
