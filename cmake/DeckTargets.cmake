# Settings that every target of this project shares.
add_library(deck_settings INTERFACE)
target_compile_options(deck_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${DECK_WERROR}>:-Werror>)
if(DECK_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1 -UNDEBUG)
  # g++ 12 sees uninitialised members in its own std::function once sanitizers are woven in.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=address,undefined)
endif()

# deck_sources(variable kind): a folder that holds no source yet gives a generated one, so that every target configures.
function(deck_sources variable kind)
  if(NOT ${variable})
    set(placeholder ${CMAKE_CURRENT_BINARY_DIR}/Empty_${variable}.cpp)
    if(kind STREQUAL "PROGRAM")
      file(CONFIGURE OUTPUT ${placeholder} CONTENT "int main() {}\n")
    else()
      file(CONFIGURE OUTPUT ${placeholder} CONTENT "\n")
    endif()
    set(${variable} ${placeholder} PARENT_SCOPE)
  endif()
endfunction()

# deck_library(target exportName sources...): a library that is installed as Tarn::<exportName>.
function(deck_library target exportName)
  set(sources ${ARGN})
  deck_sources(sources LIBRARY)
  add_library(${target} ${sources})
  add_library(Tarn::${exportName} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${exportName} OUTPUT_NAME ${target} LINKER_LANGUAGE CXX)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:deck_settings>)
  target_compile_features(${target} PUBLIC cxx_std_20)
endfunction()
