# What every target of the project shares: warnings, hardening, sanitizers, and the shape of a folder's library.

find_package(PkgConfig REQUIRED)
find_package(RapidJSON REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(fmt 9 REQUIRED)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(SIMDJSON REQUIRED IMPORTED_TARGET simdjson)
pkg_check_modules(UTF8PROC REQUIRED IMPORTED_TARGET libutf8proc)

add_library(vellumor_options INTERFACE)
target_include_directories(vellumor_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_BINARY_DIR}/src)
target_compile_options(vellumor_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Wcast-qual -Wformat=2 -Woverloaded-virtual
    $<$<BOOL:${VELLUMOR_WERROR}>:-Werror>)
# A product and a sum that are rounded at one go would make a forecast on its border another one, on those processors
# alone that have an instruction for it.
target_compile_options(vellumor_options INTERFACE -ffp-contract=off)
if(CMAKE_UNITY_BUILD)
    # Built at one go, a file's unnamed namespace looks like that of a header.
    target_compile_options(vellumor_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(VELLUMOR_SANITIZE)
    target_compile_options(vellumor_options INTERFACE
        -fsanitize=${VELLUMOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        $<$<CXX_COMPILER_ID:Clang>:-fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/cmake/sanitizer-ignore.txt>)
    target_link_options(vellumor_options INTERFACE -fsanitize=${VELLUMOR_SANITIZE})
else()
    target_compile_definitions(vellumor_options INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2> $<$<NOT:$<CONFIG:Release>>:_GLIBCXX_ASSERTIONS>)
    target_compile_options(vellumor_options INTERFACE -fstack-protector-strong)
endif()
if(VELLUMOR_FUZZ)
    target_compile_options(vellumor_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(VELLUMOR_COVERAGE)
    target_compile_options(vellumor_options INTERFACE --coverage)
    target_link_options(vellumor_options INTERFACE --coverage)
endif()

# vellumor_add_library(NAME SOURCES ... LINKS ...): the library of one folder. Its link line is its layer.
function(vellumor_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;PRIVATE_LINKS")
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC vellumor_options ${arg_LINKS} PRIVATE ${arg_PRIVATE_LINKS})
endfunction()
