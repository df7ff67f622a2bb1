# Settings of everything that is built here.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Programs and libraries beside each other, so that they find one another in the build tree as installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

include_directories(${CMAKE_SOURCE_DIR}) # every include is written from the root
add_compile_definitions(QT_NO_KEYWORDS)
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64) # long files and late dates on 32 bit, too
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wpointer-arith
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
  $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique> # a unique symbol keeps a closed module mapped
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= # builds of any folder are alike
  -ffile-prefix-map=${CMAKE_BINARY_DIR}/=)
if(VQM_WERROR)
  add_compile_options(-Werror)
endif()
if(VQM_SANITIZE)
  # Without "vptr": modules in C have virtual tables of their own making, which carry no type information.
  add_compile_options(-fsanitize=${VQM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  if(VQM_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize=vptr)
  endif()
  add_link_options(-fsanitize=${VQM_SANITIZE})
endif()
