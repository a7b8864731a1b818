# cmake -DFOLDER=... -DOUTPUT=... -P EmbedFiles.cmake: writes a source that holds the folder's files.
file(GLOB_RECURSE names RELATIVE ${FOLDER} ${FOLDER}/*)
set(arrays "")
set(table "")
set(number 0)
foreach(name ${names})
  file(READ ${FOLDER}/${name} bytes HEX)
  string(LENGTH "${bytes}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND arrays "constexpr char file${number}[] = {${bytes}'\\0'};\n")
  string(APPEND table "    {\"${name}\", {file${number}, ${size}}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT}
     "#include \"tools/collector/PageFiles.h\"\n\nnamespace collector {\n\nnamespace {\n\n${arrays}\n"
     "constexpr PageFile files[] = {\n${table}};\n\n} // namespace\n\n"
     "std::span<const PageFile> GetPageFiles() { return files; }\n\n} // namespace collector\n")
