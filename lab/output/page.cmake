# The style and the script of the page of a comparison become constants of the lab, with the hashes
# by which the page's policy knows them.

# The Base64 text of a SHA-256 hash in hexadecimal digits.
function(page_base64 digits result)
  set(alphabet ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(text)
  foreach(at RANGE 0 60 6)
    string(SUBSTRING "${digits}00" ${at} 6 three_bytes)
    foreach(shift 18 12 6 0)
      math(EXPR index "(0x${three_bytes} >> ${shift}) & 63")
      string(SUBSTRING ${alphabet} ${index} 1 letter)
      string(APPEND text ${letter})
    endforeach()
  endforeach()
  # The last byte is padding.
  string(SUBSTRING ${text} 0 43 text)
  set(${result} "${text}=" PARENT_SCOPE)
endfunction()

foreach(part style:page.css script:page.js)
  string(REGEX MATCH "^(.*):(.*)$" part ${part})
  set(file ${CMAKE_CURRENT_LIST_DIR}/${CMAKE_MATCH_2})
  set(name ${CMAKE_MATCH_1})
  file(READ ${file} ${name})
  file(SHA256 ${file} digits)
  page_base64(${digits} ${name}_hash)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/page_parts.h.in
  ${CMAKE_CURRENT_BINARY_DIR}/output/page_parts.h @ONLY)
