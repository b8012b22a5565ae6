# The compiler settings that every target of the project is built with.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES AND PROJECT_IS_TOP_LEVEL)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()

# Release builds optimise the whole library at once, which makes an event's code a tenth shorter; after
# a system call less code has to be loaded again. Not in a static library, which another compiler
# could not read then.
if(NOT WIN32 AND BUILD_SHARED_LIBS)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT LOG4ZEB_IPO_SUPPORTED OUTPUT LOG4ZEB_IPO_REASON LANGUAGES CXX)
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION_RELEASE ${LOG4ZEB_IPO_SUPPORTED})
endif()

if(LOG4ZEB_SANITIZE)
  # Sanitizers instrument everything that ends in one process, so they are set for the whole tree.
  add_compile_options(-fsanitize=${LOG4ZEB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${LOG4ZEB_SANITIZE})
endif()

function(log4zeb_compile_options target)
  target_compile_features(${target} PRIVATE cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
      -Woverloaded-virtual -Wconversion -Wno-sign-conversion)
    if(MINGW)
      # A false warning: the local object removes itself from the list in its destructor.
      target_compile_options(${target} PRIVATE -Wno-dangling-pointer)
    endif()
    if(LOG4ZEB_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
endfunction()
