# k2k_fuzz_targets(COMMAND): calls COMMAND(TARGET SOURCE DEFINITIONS...) for every fuzz target.
set(K2K_FUZZ_FOLDER ${CMAKE_CURRENT_LIST_DIR})
set(K2K_FUZZ_CORPUS ${CMAKE_CURRENT_LIST_DIR}/corpus)

add_library(k2k_fuzzing STATIC ${K2K_FUZZ_FOLDER}/fuzzing.cpp)
target_include_directories(k2k_fuzzing PUBLIC ${K2K_FUZZ_FOLDER})
target_link_libraries(k2k_fuzzing PUBLIC k2k_stages)

function(k2k_fuzz_targets command)
  foreach(target command settings textures portals level level_light build)
    cmake_language(CALL ${command} ${target} ${target}_fuzz.cpp)
  endforeach()
  foreach(target map50 map51 map71)
    cmake_language(CALL ${command} ${target} map_fuzz.cpp)
  endforeach()
  foreach(format raw pcx bmp lbm)
    cmake_language(CALL ${command} palette_${format} palette_fuzz.cpp
      FUZZ_PALETTE="palette.${format}" FUZZ_PALETTE_FILE="palette.${format}")
  endforeach()
  # A name without an extension gets the one of the fifth format.
  cmake_language(CALL ${command} palette_lmp palette_fuzz.cpp FUZZ_PALETTE="palette" FUZZ_PALETTE_FILE="palette.lmp")
endfunction()
