# mirolta_embed_text(TARGET SYMBOL FILE HEADER)
# Compiles the text of a file into a target, as mirolta::host::SYMBOL. HEADER, as the target's sources
# include it, declares
#
#   extern const std::string_view SYMBOL;
#
# The build writes the source again whenever the file changes. As a script (cmake -P) this file writes
# the source.
function(mirolta_embed_text target symbol file header)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/embedded/${symbol}.cpp)
  get_filename_component(file ${file} ABSOLUTE)
  set(script ${PROJECT_SOURCE_DIR}/cmake/EmbedText.cmake)
  add_custom_command(OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DSYMBOL=${symbol} -DFILE=${file} -DHEADER=${header} -DSOURCE=${source}
      -P ${script}
    DEPENDS ${file} ${script}
    COMMENT "Embedding ${symbol}"
    VERBATIM)
  target_sources(${target} PRIVATE ${source})
endfunction()

if(CMAKE_SCRIPT_MODE_FILE)
  file(READ ${FILE} digits HEX)
  string(LENGTH "${digits}" size)
  math(EXPR size "${size} / 2")
  # Escaping every byte needs no care for quotes, trigraphs and bytes beyond ASCII.
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" text "${digits}")
  string(REPEAT "...." 24 line)
  string(REGEX REPLACE "(${line})" "\\1\"\n    \"" text "${text}")
  file(WRITE ${SOURCE} "#include \"${HEADER}\"

namespace mirolta::host {

const std::string_view ${SYMBOL}{
    \"${text}\",
    ${size}};

}  // namespace mirolta::host
")
endif()
