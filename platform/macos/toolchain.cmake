# Builds the universal Mac app on Debian: with Debian's clang, linker and libc++ headers, with the platform's interface
# as headers/ declares it, and with stubs made from stubs/symbols.txt in place of its libraries. On a Mac this file does
# nothing: Apple's toolchain and SDK do all of it.
if(CMAKE_HOST_SYSTEM_NAME STREQUAL "Darwin")
    return()
endif()

set(CMAKE_SYSTEM_NAME Darwin)
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../../script/llvm-version" LLVM_VERSION LIMIT_COUNT 1)
set(llvm "/usr/lib/llvm-${LLVM_VERSION}")
set(CMAKE_CXX_COMPILER "${llvm}/bin/clang++")
set(CMAKE_OBJCXX_COMPILER "${llvm}/bin/clang++")
# The architectures and the lowest system come from the preset.
set(CMAKE_CXX_COMPILER_TARGET x86_64-apple-macos)
set(CMAKE_OBJCXX_COMPILER_TARGET x86_64-apple-macos)
set(CMAKE_INSTALL_NAME_TOOL "${llvm}/bin/llvm-install-name-tool")

# The SDK version in the executable. AppKit selects its look and behaviour by it: from 11.0 on today's look with Dark
# Mode.
set(sdk_version 12.3)

# CMake's trial projects have other build folders. They get the finished folder.
if(NOT CMAKE_OSX_SYSROOT OR CMAKE_OSX_SYSROOT STREQUAL "${CMAKE_BINARY_DIR}/sdk")
    set(CMAKE_OSX_SYSROOT "${CMAKE_BINARY_DIR}/sdk" CACHE PATH "The stubs, where compiler and linker look for an SDK")
    set(stubs "${CMAKE_CURRENT_LIST_DIR}/make-stubs" "${CMAKE_CURRENT_LIST_DIR}/stubs/symbols.txt")
    execute_process(COMMAND ${stubs} ${sdk_version} "${CMAKE_OSX_SYSROOT}" COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${stubs})
    # The compiler joins the two architectures with a tool of this name.
    file(MAKE_DIRECTORY "${CMAKE_OSX_SYSROOT}/usr/bin")
    file(CREATE_LINK "${llvm}/bin/llvm-lipo" "${CMAKE_OSX_SYSROOT}/usr/bin/lipo" SYMBOLIC)
endif()

# libc++ first, then the C library, then the compiler's headers; none of this machine's headers.
set(headers "-nostdlibinc -nostdinc++ -isystem ${llvm}/include/c++/v1 -isystem \"${CMAKE_CURRENT_LIST_DIR}/libc\"")
# Turns off parts of libc++ that need more of libc/ and that the product does not use.
set(features "-D_LIBCPP_HAS_NO_LOCALIZATION -D_LIBCPP_HAS_NO_WIDE_CHARACTERS")
set(tools "-B\"${CMAKE_OSX_SYSROOT}/usr/bin\"")
set(CMAKE_CXX_FLAGS_INIT "${tools} ${headers} ${features}")
set(CMAKE_OBJCXX_FLAGS_INIT "${tools} ${headers} ${features}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,-adhoc_codesign")
