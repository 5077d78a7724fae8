# The one compiler of every Debian build: the version that script/llvm-version names.
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../script/llvm-version" LLVM_VERSION LIMIT_COUNT 1)
# A full path: CMake doesn't look an Objective-C++ compiler up.
find_program(CLANG "clang++-${LLVM_VERSION}" REQUIRED)
set(CMAKE_CXX_COMPILER "${CLANG}")
set(CMAKE_OBJCXX_COMPILER "${CLANG}")
