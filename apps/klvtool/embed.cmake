# cmake -DINPUT=FILE -DOUTPUT=FILE.cpp -P embed.cmake: the file's bytes as a C++ array, ViewerPage.
file(READ ${INPUT} hex HEX)
string(REGEX REPLACE "(................................)" "\\1\n" hex "${hex}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
file(WRITE ${OUTPUT} "#include \"klvtool/view_page.h\"\n\nnamespace klvtool {\n
constexpr unsigned char Bytes[] = {\n${bytes}};\n
std::string_view ViewerPage() {\n    return {reinterpret_cast<const char*>(Bytes), sizeof(Bytes)};\n}\n
}  // namespace klvtool\n")
