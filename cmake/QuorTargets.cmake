# Options that every target of the project shares, and the helper that makes a layer.

add_library(quor_options INTERFACE)
target_compile_options(quor_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
  -Woverloaded-virtual)
if(QUOR_WERROR)
  target_compile_options(quor_options INTERFACE -Werror)
endif()
target_compile_definitions(quor_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII
  QT_DEPRECATED_WARNINGS)
if(QUOR_SANITIZE)
  target_compile_options(quor_options INTERFACE -fsanitize=${QUOR_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(quor_options INTERFACE -fsanitize=${QUOR_SANITIZE})
  if(QUOR_SANITIZE MATCHES undefined)
    # VTK's own classes carry no type information that the check of virtual calls could use.
    target_compile_options(quor_options INTERFACE -fno-sanitize=vptr -fno-sanitize-recover=undefined)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Its flow analysis reports false positives in instrumented code.
    target_compile_options(quor_options INTERFACE -Wno-error=maybe-uninitialized -Wno-error=tsan)
  endif()
endif()

# One precompiled header serves all layers and programs, another one the tests; each target with its own
# would spend six seconds and 140 MB on the same. A target may define more than the owner of its header,
# not less.
function(quor_pch_owner name)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  if(QUOR_PCH)
    add_library(${name} OBJECT ${PROJECT_SOURCE_DIR}/cmake/pch.cpp)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_link_libraries(${name} PRIVATE Qt6::Core quor_options ${ARG_LINK})
    target_precompile_headers(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/pch.h ${ARG_HEADERS})
  endif()
endfunction()
function(quor_pch target owner)
  if(QUOR_PCH)
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endif()
endfunction()
quor_pch_owner(quor_pch_layers)

# quor_layer(NAME SOURCES a.cpp ... LINK target ...)
# A layer sees its own folder and, through LINK, the layers under it: an include that looks up
# does not compile.
function(quor_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC Qt6::Core ${ARG_LINK} PRIVATE quor_options ${ARG_PRIVATE_LINK})
  quor_pch(${name} quor_pch_layers)
endfunction()

# quor_test(NAME LABEL unit SOURCES a.cpp ... LINK target ...)
# One test program a layer: the sources link the layer's library, never a copy of its sources.
function(quor_test name)
  cmake_parse_arguments(ARG "" "LABEL;TIMEOUT" "SOURCES;LINK" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(QUOR_SANITIZE MATCHES address)
    set(environment "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0")
    math(EXPR ARG_TIMEOUT "${ARG_TIMEOUT} * 3")
  elseif(QUOR_SANITIZE MATCHES thread)
    set(environment "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.supp:history_size=5")
    math(EXPR ARG_TIMEOUT "${ARG_TIMEOUT} * 5")
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quor_options quor_test_support ${ARG_LINK})
  quor_pch(${name} quor_pch_tests)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_dependencies(tests ${name})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    TEST_PREFIX "${name}." PROPERTIES LABELS "${ARG_LABEL}" TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "${environment}")
endfunction()
