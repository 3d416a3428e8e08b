# Writes OUT, a C++ source that holds the page's parts as zero-terminated byte arrays:
#   cmake -DOUT=file.cpp -DBODY=page.html -DCSS=page.css -DJS=page.js -P embed.cmake
function(embed var file result)
  file(READ "${file}" hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "(([^,]*,){24})" "\\1\n" bytes "${bytes}")
  set(${result} "extern const unsigned char ${var}[];\nconst unsigned char ${var}[] = {\n${bytes}0};\n" PARENT_SCOPE)
endfunction()
embed(kHtmlPageBody "${BODY}" body)
embed(kHtmlPageCss "${CSS}" css)
embed(kHtmlPageJs "${JS}" js)
file(WRITE "${OUT}.tmp" "// Made from tools/vemtool/html at build time.\nnamespace vemtool {\n${body}${css}${js}}  // namespace vemtool\n")
file(RENAME "${OUT}.tmp" "${OUT}")
