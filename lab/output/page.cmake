# Makes page.css and page.js constants: output/page_parts.h.
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.css style)
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.js script)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${CMAKE_CURRENT_LIST_DIR}/page.css ${CMAKE_CURRENT_LIST_DIR}/page.js)
file(CONFIGURE OUTPUT output/page_parts.h @ONLY CONTENT [[
namespace lab {
inline constexpr char page_style[] = R"page(@style@)page";
inline constexpr char page_script[] = R"page(@script@)page";
}  // namespace lab
]])
