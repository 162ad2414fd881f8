# The same tests with narrower instruction sets than the processor's widest one.
foreach(set baseline avx2)
  add_test(NAME isa.${set} COMMAND kreiluge_tests --gtest_brief=1 --gtest_filter=-GPUParity*)
  set_tests_properties(isa.${set} PROPERTIES ENVIRONMENT KREILUGE_ISA=${set})
endforeach()

# All outputs, of inputs that no test has a formula for as well.
add_test(NAME isa.digests COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/isa_digests.sh $<TARGET_FILE:kreiluge_tests>)
set_tests_properties(isa.digests PROPERTIES TIMEOUT 600)

# What kernel objects show the linker; sanitizers add symbols of their own.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  foreach(set baseline avx2 avx512)
    if(TARGET kreiluge_objects_${set})
      add_test(NAME isa.symbols.${set} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/kernel_symbols.sh ${CMAKE_NM} ru_${set}
        $<TARGET_OBJECTS:kreiluge_objects_${set}> COMMAND_EXPAND_LISTS)
    endif()
  endforeach()
endif()
