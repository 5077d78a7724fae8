# The compiler of every Debian build: the version in script/llvm-version.
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../script/llvm-version" LLVM_VERSION LIMIT_COUNT 1)
# A full path: CMake does not search for an Objective-C++ compiler.
find_program(CLANG "clang++-${LLVM_VERSION}" REQUIRED)
set(CMAKE_CXX_COMPILER "${CLANG}")
set(CMAKE_OBJCXX_COMPILER "${CLANG}")
