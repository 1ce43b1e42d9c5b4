# Type descriptions (*.types) are compiled to C++ in the build tree by codegen/ldpgen.py.
# ldp_types(<target> <unit.types>...) adds, for each description <dir>/<Unit>.types,
# the generated <gen>/<dir>/<Unit>.gen.h and <Unit>.gen.cpp to <target>.
set(LDP_GEN_DIR ${CMAKE_BINARY_DIR}/gen)
set(LDP_CODEGEN ${CMAKE_SOURCE_DIR}/codegen/ldpgen.py)
file(GLOB LDP_CODEGEN_SOURCES ${CMAKE_SOURCE_DIR}/codegen/*.py)

function(ldp_types target)
  foreach(desc IN LISTS ARGN)
    file(RELATIVE_PATH rel ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/${desc})
    string(REGEX REPLACE "\\.types$" "" stem ${rel})
    set(out_h ${LDP_GEN_DIR}/${stem}.gen.h)
    set(out_cpp ${LDP_GEN_DIR}/${stem}.gen.cpp)
    set(out_dep ${LDP_GEN_DIR}/${stem}.gen.d)
    # The depfile lists the descriptions this one imports, so editing one of them
    # regenerates every unit that imports it.
    add_custom_command(
      OUTPUT ${out_h} ${out_cpp}
      COMMAND ${Python3_EXECUTABLE} ${LDP_CODEGEN}
              --source-root ${CMAKE_SOURCE_DIR} --out-root ${LDP_GEN_DIR} --depfile ${out_dep} ${rel}
      DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${desc} ${LDP_CODEGEN_SOURCES}
      DEPFILE ${out_dep}
      WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
      COMMENT "Generating ${stem}.gen.h/.cpp"
      VERBATIM)
    target_sources(${target} PRIVATE ${out_cpp} ${out_h})
  endforeach()
endfunction()
