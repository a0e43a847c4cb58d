# A development kit for Java: its jni.h for the natives, its compiler and archiver for the classes.
# Nothing links the virtual machine.
find_package(Java 17 REQUIRED COMPONENTS Development Runtime)
include(UseJava)

# The headers of the same kit; Debian's compiler is a link into it.
file(REAL_PATH "${Java_JAVAC_EXECUTABLE}" kx_javac)
cmake_path(GET kx_javac PARENT_PATH kx_java_home)
cmake_path(GET kx_java_home PARENT_PATH kx_java_home)
# This machine's headers are right for any target, because they name no sizes.
find_path(KX_JNI_INCLUDE jni.h PATHS "${kx_java_home}/include" NO_DEFAULT_PATH
    NO_CMAKE_FIND_ROOT_PATH REQUIRED DOC "The folder of the Java development kit's jni.h")
include_directories(SYSTEM "${KX_JNI_INCLUDE}" "${KX_JNI_INCLUDE}/linux")

# Warnings for our own classes, as errors; a public member without a comment is one.
set(CMAKE_JAVA_COMPILE_FLAGS --release 17 -Xlint:all -Werror -encoding UTF-8)
