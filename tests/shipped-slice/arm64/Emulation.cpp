// Corrects what QEMU's user mode does differently from a kernel.
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fstream>
#include <spawn.h>
#include <unistd.h>

/// Finds the C library's function, which this file's function of the same name hides.
template <typename Function> Function *libraryFunction(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/// Replaces opendir: the emulator maps "/" to the folder with the libraries, but the open panel needs the real disk.
extern "C" DIR *opendir(const char *path)
{
    static auto *const library = libraryFunction<DIR *(const char *)>("opendir");
    return library(std::strcmp(path, "/") == 0 ? "/proc/self/root/" : path);
}

/// Replaces posix_spawn: in the emulator the child shares no memory with its parent, so posix_spawn never reports that
/// a program could not be started. This function checks the program first.
extern "C" int posix_spawn(pid_t *process, const char *path, const posix_spawn_file_actions_t *files,
    const posix_spawnattr_t *attributes, char *const arguments[], char *const environment[])
{
    static auto *const library = libraryFunction<decltype(posix_spawn)>("posix_spawn");
    if (access(path, X_OK) != 0) {
        return errno;
    }
    char head[4] {};
    std::ifstream(path, std::ios::binary).read(head, sizeof head);
    const bool isProgram = std::memcmp(head, "\177ELF", 4) == 0 || std::memcmp(head, "#!", 2) == 0;
    return isProgram ? library(process, path, files, attributes, arguments, environment) : ENOEXEC;
}
