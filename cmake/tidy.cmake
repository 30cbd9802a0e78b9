# The target "tidy" runs clang-tidy on what the other targets compile, and compiles nothing itself.
if(QV_TIDY)
  find_program(RUN_CLANG_TIDY run-clang-tidy REQUIRED)
  add_custom_target(tidy COMMAND ${RUN_CLANG_TIDY} -quiet -p ${CMAKE_BINARY_DIR} VERBATIM)
endif()
