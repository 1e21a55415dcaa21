# The pictures of the windows, drawn as SVG in src/ui/pictures and rendered while building.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)

set(TMW_STAGE_PICTURES download scan dbnew dbgear trash install brush)
set(TMW_STAGE_PICTURE_SIZES 48 60 72 96)        # 100, 125, 150 and 200 %
set(TMW_PROGRAM_PICTURE_SIZES 16 24 32 48 64 256)

# tmw_pictures(RESULT): rules that render every picture to <build>/pictures/<name>-<size>.png. RESULT
# names the files; whatever is made of them is a target of the folder that calls this.
function(tmw_pictures result)
  set(pictures)
  foreach(name IN LISTS TMW_STAGE_PICTURES ITEMS program)
    set(source ${PROJECT_SOURCE_DIR}/src/ui/pictures/${name}.svg)
    set(sizes ${TMW_STAGE_PICTURE_SIZES})
    if(name STREQUAL program)
      set(sizes ${TMW_PROGRAM_PICTURE_SIZES})
    endif()
    foreach(size IN LISTS sizes)
      set(picture ${PROJECT_BINARY_DIR}/pictures/${name}-${size}.png)
      add_custom_command(OUTPUT ${picture}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/pictures
        COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${picture} ${source}
        DEPENDS ${source}
        VERBATIM)
      list(APPEND pictures ${picture})
    endforeach()
  endforeach()
  set(${result} ${pictures} PARENT_SCOPE)
endfunction()

# tmw_picture_resource(RESULT pictures...): a source that holds the pictures as the Qt resource
# ":/pictures/<name>-<size>.png".
function(tmw_picture_resource result)
  set(list ${CMAKE_CURRENT_BINARY_DIR}/pictures.qrc)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/qrc_pictures.cpp)
  set(lines)
  foreach(picture IN LISTS ARGN)
    cmake_path(GET picture FILENAME name)
    string(APPEND lines "    <file alias=\"${name}\">${picture}</file>\n")
  endforeach()
  file(CONFIGURE OUTPUT ${list} CONTENT
    "<RCC>\n  <qresource prefix=\"/pictures\">\n${lines}  </qresource>\n</RCC>\n")
  add_custom_command(OUTPUT ${source}
    COMMAND Qt6::rcc --name pictures --output ${source} ${list}
    DEPENDS ${list} ${ARGN}
    VERBATIM)
  set(${result} ${source} PARENT_SCOPE)
endfunction()
