# kreiluge_kernels(<target> <source>...): compiles each *.isa.cpp once per instruction set, in the namespace
# RU_ISA, and adds the objects to <target>. The sets are those of platform/PXL/PXL_Caps.h.

# No traps and no errno: results stay the same, but compilers may then vectorise selects, floor and division.
set(KREILUGE_KERNEL_FLAGS -fno-trapping-math -fno-math-errno)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # these turn a select into several, and gathers into branches
  list(APPEND KREILUGE_KERNEL_FLAGS -fno-thread-jumps -fno-tree-pre)
endif()
set(KREILUGE_ISA_baseline "")
# Tuned for a processor: generic tuning takes gathers apart.
set(KREILUGE_ISA_avx2 -mavx2 -mf16c -mtune=skylake)
set(KREILUGE_ISA_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx512vbmi -mf16c -mprefer-vector-width=512 -mtune=skylake-avx512)

function(kreiluge_kernels target)
  set(sets baseline)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    list(APPEND sets avx2 avx512)
  endif()
  foreach(set IN LISTS sets)
    set(objects ${target}_${set})
    add_library(${objects} OBJECT ${ARGN})
    target_compile_definitions(${objects} PRIVATE RU_ISA=ru_${set})
    target_compile_options(${objects} PRIVATE ${KREILUGE_KERNEL_FLAGS} ${KREILUGE_ISA_${set}})
    target_include_directories(${objects} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/platform)
    target_link_libraries(${objects} PRIVATE kreiluge_flags)
    target_sources(${target} INTERFACE $<TARGET_OBJECTS:${objects}>)
  endforeach()
endfunction()
