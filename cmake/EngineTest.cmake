# engine_add_test(<name> SOURCES <files...> LIBS <targets...> [SANITIZED] [NEEDS_DISPLAY]
#                 [LABELS <labels...>] [ENVIRONMENT <VAR=value...>])
# Builds one GoogleTest program and registers it with CTest as one test.
# SANITIZED: also built and run by the AddressSanitizer/UBSan tree (target sanitized_tests).
# NEEDS_DISPLAY: opens windows on the X display; such programs run one at a time, since a
# window that appears can take the keyboard focus from another test's window.
function(engine_add_test name)
  cmake_parse_arguments(T "SANITIZED;NEEDS_DISPLAY" "" "SOURCES;LIBS;LABELS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main GTest::gmock)
  target_compile_definitions(${name} PRIVATE
    ENGINE_CORPUS_DIR="${ENGINE_CORPUS_DIR}"
    ENGINE_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    ENGINE_BINARY_DIR="${PROJECT_BINARY_DIR}")
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
  set(labels ${T_LABELS})
  if(T_SANITIZED)
    list(APPEND labels sanitized)
    add_dependencies(sanitized_tests ${name})
  endif()
  if(labels)
    set_tests_properties(${name} PROPERTIES LABELS "${labels}")
  endif()
  if(T_NEEDS_DISPLAY)
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK x_display)
  endif()
  if(T_ENVIRONMENT)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "${T_ENVIRONMENT}")
  endif()
endfunction()
