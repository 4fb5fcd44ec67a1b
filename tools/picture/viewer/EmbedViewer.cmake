# Joins the viewer's script modules into one script and writes it, with the
# style sheet, into a C++ source as byte arrays: no size limit, and no text a
# script could contain ends the array early. Run at build time:
#   cmake -DOUTPUT=ViewerAssets.cpp -DJOINED=viewer.js -DSTYLE=viewer.css
#         "-DMODULES=a.js;b.js" -P EmbedViewer.cmake
set(joined "// The timeline viewer, joined from tools/picture/viewer at build time.\n(function () {\n\"use strict\";\n")
foreach(module IN LISTS MODULES)
  file(READ "${module}" text)
  get_filename_component(name "${module}" NAME)
  string(APPEND joined "// ---- ${name}\n${text}")
endforeach()
string(APPEND joined "})();\n")
file(WRITE "${JOINED}.tmp" "${joined}")

function(byte_array variable path)
  file(READ "${path}" hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  # Lines of a few hundred characters keep compilers and editors happy.
  string(REGEX REPLACE "(('\\\\x..',){40})" "\\1\n" bytes "${bytes}")
  set(${variable} "${bytes}" PARENT_SCOPE)
endfunction()
byte_array(script_bytes "${JOINED}.tmp")
byte_array(style_bytes "${STYLE}")

file(WRITE "${OUTPUT}.tmp" "// Generated at build time by tools/picture/viewer/EmbedViewer.cmake: the
// viewer's script and style, built into the tool so that its pages need no
// other file.
#include \"picture/HtmlPage.h\"

namespace TimelineConvert {

namespace {
const char kScript[] = {
${script_bytes}'\\0'};
const char kStyle[] = {
${style_bytes}'\\0'};
}  // namespace

const char* ViewerScript() { return kScript; }

const char* ViewerStyle() { return kStyle; }

}  // namespace TimelineConvert
")
file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
file(RENAME "${JOINED}.tmp" "${JOINED}")
