# What a program that runs as root should have: position independent, nothing writable that is executable,
# addresses bound before it begins, and checks in the C library and on the stack.
add_compile_options(-fstack-protector-strong -fstack-clash-protection)
if(NOT QV_SANITIZE)
  add_compile_options("$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
endif()
add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
