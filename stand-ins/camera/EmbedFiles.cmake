# Writes a source with the bytes of files in it:
#   cmake -D OUTPUT=SOURCE -D XML=FILE -D ZIP=FILE -P EmbedFiles.cmake
function(embed name path)
    file(READ "${path}" digits HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${digits}")
    string(REGEX REPLACE "((0x..,){20})" "\\1\n" bytes "${bytes}")
    set(source "${source}
namespace {
constexpr unsigned char bytesOf${name}[] = {
${bytes}};
} // namespace
const EmbeddedFile embeddedDescription${name}{bytesOf${name}, int(sizeof(bytesOf${name}))};
" PARENT_SCOPE)
endfunction()

set(source "#include \"stand-ins/camera/EmbeddedDescription.h\"\n\nnamespace emulated_camera {\n")
embed(Xml "${XML}")
embed(Zip "${ZIP}")
file(WRITE "${OUTPUT}" "${source}\n} // namespace emulated_camera\n")
