# The same tests with narrower instruction sets than the processor's widest one.
foreach(set baseline avx2)
  add_test(NAME isa.${set} COMMAND kreiluge_tests --gtest_brief=1)
  set_tests_properties(isa.${set} PROPERTIES ENVIRONMENT KREILUGE_ISA=${set})
endforeach()
