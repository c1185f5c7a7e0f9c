# Links with LLVM's lld: it is many times faster than GNU ld, and only lld fills the load configuration directory.
# g++ ignores -fuse-ld=lld when it cross-compiles, so clang++ drives the link, with GCC's start-up files and runtime.
# Included after project(), which sets the commands of the platform.
set(lld "clang++ --target=${AMBREL_TRIPLE} -fuse-ld=lld -static -L${AMBREL_GCC_FOLDER} -B${AMBREL_GCC_FOLDER}")
set(gcc_runtime "-lstdc++ -lssp -lpthread")
set(CMAKE_CXX_LINK_EXECUTABLE
    "${lld} <CMAKE_CXX_LINK_FLAGS> <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES> ${gcc_runtime}")
set(CMAKE_CXX_CREATE_SHARED_MODULE
    "${lld} -shared <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES> ${gcc_runtime}")
