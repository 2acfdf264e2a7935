# Without JAVA_HOME, CMake's JNI and Java modules look in a few fixed places
# only; a JDK is usually found as `javac` on the PATH, a symlink into the JDK.
# Its home is set as JAVA_HOME for those modules.
if(NOT DEFINED ENV{JAVA_HOME} AND NOT JAVA_HOME)
  find_program(VOSTAN_JAVAC javac)
  if(VOSTAN_JAVAC)
    file(REAL_PATH "${VOSTAN_JAVAC}" _javac)
    cmake_path(GET _javac PARENT_PATH _bin)
    cmake_path(GET _bin PARENT_PATH _home)
    if(EXISTS "${_home}/include/jni.h")
      set(JAVA_HOME "${_home}" CACHE PATH "The JDK, found from javac on the PATH")
      message(STATUS "JDK from javac on the PATH: ${JAVA_HOME}")
    endif()
  endif()
endif()
