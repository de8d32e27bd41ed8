# The style and the script of the page of a comparison become constants of the lab.
foreach(part style:page.css script:page.js)
  string(REGEX MATCH "^(.*):(.*)$" part ${part})
  set(file ${CMAKE_CURRENT_LIST_DIR}/${CMAKE_MATCH_2})
  file(READ ${file} ${CMAKE_MATCH_1})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/page_parts.h.in
  ${CMAKE_CURRENT_BINARY_DIR}/output/page_parts.h @ONLY)
