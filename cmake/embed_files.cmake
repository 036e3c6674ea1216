# Writes a C++ source that holds files: cmake -DOUTPUT=... -DFOLDER=... "-DFILES=a;b" -P embed_files.cmake
# Bytes become escapes in string literals, which the compiler reads much faster than lists of numbers.
list(SORT FILES)
set(types html text/html css text/css js text/javascript svg image/svg+xml)
set(rows)
foreach(file IN LISTS FILES)
  get_filename_component(extension ${file} LAST_EXT)
  string(SUBSTRING ${extension} 1 -1 extension)
  list(FIND types ${extension} place)
  if(place EQUAL -1)
    message(FATAL_ERROR "No media type is known for ${file}")
  endif()
  math(EXPR place "${place} + 1")
  list(GET types ${place} type)
  file(READ ${FOLDER}/${file} bytes HEX)
  string(LENGTH "${bytes}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  # A line of the file is a line of the source.
  string(REGEX REPLACE "(\\\\x0a)" "\\1\"\n    \"" bytes "${bytes}")
  set(path /${file})
  if(file STREQUAL "index.html")
    set(path /)
  endif()
  string(APPEND rows "  {\"${path}\", \"${type}; charset=utf-8\",\n   {\"${bytes}\",\n    ${size}}},\n")
endforeach()
file(WRITE ${OUTPUT}.new "// Made by embed_files.cmake from the page's files.
#include \"page_files.h\"

namespace nerova_zel {

namespace {

constexpr PageFile page_files[] = {
${rows}};

}  // namespace

const PageFile* find_page_file(std::string_view path) {
  for (const PageFile& file : page_files) {
    if (file.path == path) {
      return &file;
    }
  }
  return nullptr;
}

}  // namespace nerova_zel
")
file(RENAME ${OUTPUT}.new ${OUTPUT})
