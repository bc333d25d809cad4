# Manual pages of orvik and its commands, made from their --help where help2man is there.
find_program(ORVIK_HELP2MAN help2man)

# orvik_man_page(TARGET name "what it does" [command])
function(orvik_man_page target name summary)
  set(page "${PROJECT_BINARY_DIR}/man/${name}.1")
  string(JOIN " " call "$<TARGET_FILE:${target}>" ${ARGN})
  add_custom_command(OUTPUT "${page}"
                     COMMAND "${ORVIK_HELP2MAN}" --no-info --no-discard-stderr
                             "--version-string=${PROJECT_VERSION}" "--name=${summary}" "--output=${page}" "${call}"
                     DEPENDS ${target}
                     COMMENT "Manual page ${name}(1)"
                     VERBATIM)
  set_property(GLOBAL APPEND PROPERTY ORVIK_MAN_PAGES "${page}")
endfunction()

function(orvik_install_man_pages target)
  if(NOT ORVIK_HELP2MAN OR CMAKE_CROSSCOMPILING)
    message(STATUS "no manual pages: help2man is not there")
    return()
  endif()
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/man")
  orvik_man_page(${target} orvik "directional waves from bursts of acoustic current meters")
  orvik_man_page(${target} orvik-process "wave parameters and spectra of a deployment" process)
  orvik_man_page(${target} orvik-simulate "burst file of a simulated sea" simulate)
  orvik_man_page(${target} orvik-init "what is known of an instrument, and what is not" init)
  orvik_man_page(${target} orvik-report "a result file as one page" report)
  orvik_man_page(${target} orvik-explain "why a burst's numbers are what they are" explain)
  orvik_man_page(${target} orvik-convert "results for other programs" convert)
  orvik_man_page(${target} orvik-show "what a burst file or result file holds" show)
  get_property(pages GLOBAL PROPERTY ORVIK_MAN_PAGES)
  add_custom_target(orvik_man_pages ALL DEPENDS ${pages})
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT orvik)
endfunction()
