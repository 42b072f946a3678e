# cmake -DFOLDER=songs/page -DOUTPUT=page_source.cpp -P embed.cmake
# Puts style and script into the page, and the page into the program's text.
file(READ ${FOLDER}/page.html page)
foreach(piece page.css page.js)
  file(READ ${FOLDER}/${piece} text)
  string(REPLACE "{{${piece}}}" "${text}" page "${page}")
endforeach()
string(FIND "${page}" "{{data}}" data)
string(SUBSTRING "${page}" 0 ${data} before)
math(EXPR data "${data} + 8")
string(SUBSTRING "${page}" ${data} -1 after)
file(WRITE ${OUTPUT} "#include \"torv/songs/page_source.h\"

const std::string_view torv::songs::kPageBeforeData = R\"PAGE(${before})PAGE\";
const std::string_view torv::songs::kPageAfterData = R\"PAGE(${after})PAGE\";
")
