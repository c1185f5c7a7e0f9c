// Preloaded into Wine's processes. A process that ends first disconnects from Wine's server and then calls
// exit(). The server kills a process that still exists half a second later, and its exit code is lost. exit()
// runs the clean-up of the Linux libraries, which takes longer than that on a busy machine and which the
// processes do not need. Only the server itself keeps it.

extern char* program_invocation_short_name;
void* dlsym(void* handle, const char* name);
int strncmp(const char* one, const char* other, unsigned long count);
_Noreturn void _exit(int status);

_Noreturn void exit(int status) {
    static const char kServer[] = "wineserver";
    if (strncmp(program_invocation_short_name, kServer, sizeof(kServer) - 1) == 0) {
        void* const kNextLibrary = (void*)-1L;  // RTLD_NEXT
        void (*const original)(int) = (void (*)(int))dlsym(kNextLibrary, "exit");
        original(status);
    }
    _exit(status);
}
