find_program(NPM npm REQUIRED)
find_program(NODE node REQUIRED)

# Installs a folder's npm packages, as its lock file has them, beside its sources: once for every build.
# Sets `stamp` to the file to depend on.
function(npm_install folder stamp)
  set(installed ${folder}/node_modules/.package-lock.json)
  add_custom_command(OUTPUT ${installed}
    COMMAND ${NPM} ci --ignore-scripts --no-audit --no-fund --loglevel=error
    COMMAND ${CMAKE_COMMAND} -E touch ${installed}
    DEPENDS ${folder}/package.json ${folder}/package-lock.json
    WORKING_DIRECTORY ${folder}
    COMMENT "Installing npm packages in ${folder}")
  set(${stamp} ${installed} PARENT_SCOPE)
endfunction()
