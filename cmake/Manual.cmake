# The manual as one HTML file, where pandoc is installed: the target `manual`, a part of every build.
find_program(PANDOC pandoc)
if(PANDOC)
  file(GLOB manual_pages CONFIGURE_DEPENDS docs/manual/*.md docs/manual/pictures/*)
  set(manual_html ${PROJECT_BINARY_DIR}/manual.html)
  add_custom_command(OUTPUT ${manual_html}
    COMMAND ${PROJECT_SOURCE_DIR}/tools/manual ${manual_html}
    DEPENDS tools/manual docs/html/template.html docs/html/vb.xml ${manual_pages}
    VERBATIM)
  add_custom_target(manual ALL DEPENDS ${manual_html})
endif()
