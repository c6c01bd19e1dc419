# What Windows reads out of a program's file: icon, version, and how the program wants to be treated (manifest).
enable_language(RC)
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)

set(VARNLOG_ICON ${CMAKE_BINARY_DIR}/varnlog.ico)
set(pictures)
foreach(size 16 20 24 32 40 48 64 128 256)
  set(picture ${CMAKE_BINARY_DIR}/icon/varnlog-${size}.png)
  add_custom_command(OUTPUT ${picture}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/icon
    COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${picture} ${CMAKE_SOURCE_DIR}/resources/icons/Varnlog.svg
    DEPENDS ${CMAKE_SOURCE_DIR}/resources/icons/Varnlog.svg VERBATIM)
  list(APPEND pictures ${picture})
endforeach()
add_custom_command(OUTPUT ${VARNLOG_ICON} COMMAND ${ICOTOOL} -c -o ${VARNLOG_ICON} ${pictures} DEPENDS ${pictures} VERBATIM)
add_custom_target(varnlog_icon DEPENDS ${VARNLOG_ICON})

# varnlog_resources(TARGET DESCRIPTION [ICON])
function(varnlog_resources TARGET DESCRIPTION)
  set(ICON_LINE "")
  if("ICON" IN_LIST ARGN)
    set(ICON_LINE "1 ICON \"${VARNLOG_ICON}\"")
    add_dependencies(${TARGET} varnlog_icon)
  endif()
  set(resources ${CMAKE_CURRENT_BINARY_DIR}/${TARGET}.rc)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.rc.in ${resources} @ONLY)
  set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS ${CMAKE_SOURCE_DIR}/packaging/windows/program.manifest)
  target_sources(${TARGET} PRIVATE ${resources})
endfunction()
