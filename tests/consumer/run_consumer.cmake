file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "command failed (${result}): ${ARGN}\n${out}\n${err}")
  endif()
endfunction()

# A cross build's programs run under its emulator.
separate_arguments(emulator UNIX_COMMAND "${EMULATOR}")
set(toolchain)
if(TOOLCHAIN_FILE)
  set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(file include/zando/zando.h lib/cmake/Zando/ZandoConfig.cmake lib/pkgconfig/zando.pc)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "installed package lacks ${file}")
  endif()
endforeach()

# find_package(Zando) and Zando::zando.
run(${CMAKE_COMMAND} -S ${PROJECT_DIR} -B ${WORK_DIR}/build -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release
    ${toolchain})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${emulator} ${WORK_DIR}/build/consumer)

# pkg-config.
if(TARGET_PKG_CONFIG)
  set(PKG_CONFIG ${TARGET_PKG_CONFIG})
else()
  find_program(PKG_CONFIG pkg-config REQUIRED)
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs zando OUTPUT_VARIABLE flags RESULT_VARIABLE result
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know zando")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX_COMPILER} -std=c++17 ${PROJECT_DIR}/consumer.cc ${flags} -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/consumer_pc)
run(${emulator} ${WORK_DIR}/consumer_pc)
