set(QV_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")

if(QV_SANITIZE)
  add_compile_options(-fsanitize=${QV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_definitions(QV_SANITIZED)
  add_link_options(-fsanitize=${QV_SANITIZE})
endif()
