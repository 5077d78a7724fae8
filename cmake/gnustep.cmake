# Compiler and linker settings for GNUstep, as the INTERFACE target `gnustep-flags`. They are gnustep-config's
# definitions without its search paths, dependency flags and optimisation flags.
find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
execute_process(COMMAND "${GNUSTEP_CONFIG}" --objc-flags OUTPUT_VARIABLE compile_flags OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${GNUSTEP_CONFIG}" --gui-libs OUTPUT_VARIABLE link_flags OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT compile_flags OR NOT link_flags)
    message(FATAL_ERROR "gnustep-config prints nothing; it needs make. Run script/bootstrap.")
endif()
separate_arguments(compile_flags UNIX_COMMAND "${compile_flags}")
separate_arguments(link_flags UNIX_COMMAND "${link_flags}")
list(FILTER compile_flags EXCLUDE REGEX "^-(I|M|g$|O|W)")
list(FILTER link_flags EXCLUDE REGEX "^-(L|shared-libgcc$)")

# <objc/objc.h> of the C runtime is among GCC's headers.
file(GLOB objc_header "${CMAKE_SYSROOT}/usr/lib/gcc/*/12/include/objc/objc.h")
if(NOT objc_header)
    message(FATAL_ERROR "No <objc/objc.h>: libobjc-12-dev is missing. Run script/bootstrap.")
endif()
cmake_path(GET objc_header PARENT_PATH objc_folder)
cmake_path(GET objc_folder PARENT_PATH gcc_include_folder)

add_library(gnustep-flags INTERFACE)
target_link_libraries(gnustep-flags INTERFACE project-options ${link_flags} X11)
target_compile_options(gnustep-flags INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${compile_flags};-fobjc-runtime=gcc;-fblocks>")
target_include_directories(gnustep-flags SYSTEM INTERFACE "${CMAKE_SYSROOT}/usr/include/GNUstep" "${gcc_include_folder}")
target_include_directories(gnustep-flags INTERFACE "${PROJECT_SOURCE_DIR}/platform/gnustep/include")
# The GNU runtime's metadata has many pointers. Without packing, their relocations are a third of the executable.
target_link_options(gnustep-flags INTERFACE -Wl,-z,pack-relative-relocs)
