# cmake -DOUTPUT=... -DROWS="id=file;..." -P EmbedResources.cmake
# Writes the registry scripts as a table of data resources, for modules whose file has none.
set(content "// Made by the build from the registry scripts.\n#include \"registry_resources.h\"\n\nnamespace mirolta {\n\nnamespace {\n\n")
set(table "")
set(count 0)
foreach(row ${ROWS})
  string(REGEX MATCH "^([0-9]+)=(.*)$" _ "${row}")
  set(id ${CMAKE_MATCH_1})
  file(READ ${CMAKE_MATCH_2} bytes HEX)
  string(LENGTH "${bytes}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(APPEND content "constexpr BYTE kScript${id}[] = {${bytes}};\n")
  string(APPEND table "    {OLESTR(\"REGISTRY\"), ${id}, kScript${id}, ${size}},\n")
  math(EXPR count "${count} + 1")
endforeach()
string(APPEND content "\n}  // namespace\n\nstatic_assert(kRegistryScriptCount == ${count});\nconstexpr DataResource kRegistryScripts[] = {\n${table}};\n"
  "\n}  // namespace mirolta\n")
file(WRITE ${OUTPUT} "${content}")
