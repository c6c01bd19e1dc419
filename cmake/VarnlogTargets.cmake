# One INTERFACE target carries the language level and the warnings for everything.
add_library(varnlog_options INTERFACE)
add_library(varnlog::options ALIAS varnlog_options)
target_compile_features(varnlog_options INTERFACE cxx_std_20)
target_include_directories(varnlog_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(varnlog_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(WIN32)
  include(WindowsResources)
  target_compile_definitions(varnlog_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN U_STATIC_IMPLEMENTATION)
else()
  # A program loads only what it uses, not all that the folders it is made of could use.
  target_link_options(varnlog_options INTERFACE LINKER:--as-needed)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(VARNLOG_SANITIZE)
  # The instrumentation makes GCC 12 see uninitialised values inside <regex> and std::function.
  target_compile_options(varnlog_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_compile_options(varnlog_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
  target_link_options(varnlog_options INTERFACE -fsanitize=address,undefined)
endif()
if(VARNLOG_COVERAGE)
  target_compile_options(varnlog_options INTERFACE --coverage)
  target_link_options(varnlog_options INTERFACE --coverage)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# The program folder that every build leaves behind, complete and free to be copied anywhere. The release
# preset fills build/program itself; the others keep theirs beside their objects.
if(CMAKE_BINARY_DIR STREQUAL "${CMAKE_SOURCE_DIR}/build/release")
  set(VARNLOG_PROGRAM_DIR ${CMAKE_SOURCE_DIR}/build/program)
else()
  set(VARNLOG_PROGRAM_DIR ${CMAKE_BINARY_DIR}/program)
endif()

# varnlog_library(NAME SOURCES ... [DEPENDS ...] [PRIVATE_DEPENDS ...])
# A folder's library. What a folder does not declare here it cannot link.
function(varnlog_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(varnlog_${name} STATIC ${ARG_SOURCES})
  add_library(varnlog::${name} ALIAS varnlog_${name})
  target_link_libraries(varnlog_${name} PUBLIC varnlog::options ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
endfunction()

# varnlog_program(NAME DESCRIPTION ... SOURCES ... DEPENDS ...): an executable of the program folder.
function(varnlog_program name)
  cmake_parse_arguments(ARG "" "DESCRIPTION" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE varnlog::options ${ARG_DEPENDS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VARNLOG_PROGRAM_DIR})
  add_dependencies(program_folder ${name} program_databases)
  if(WIN32)
    varnlog_resources(${name} "${ARG_DESCRIPTION}" ICON)
  endif()
endfunction()

# Everything that the program folder is made of, without tests and benchmarks.
add_custom_target(program_folder)

# varnlog_windows(NAME SOURCES ... DEPENDS ...): the windows of a folder, apart from its logic so that the programs
# without a window never link them.
function(varnlog_windows name)
  if(NOT TARGET varnlog_ui)  # built without windows
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  varnlog_library(${name}_windows SOURCES ${ARG_SOURCES} DEPENDS ${ARG_DEPENDS} varnlog::ui Qt6::Widgets)
endfunction()
