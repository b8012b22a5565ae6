include(FetchContent)
FetchContent_Declare(kivlog4zeb SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR}/log4zeb)
FetchContent_MakeAvailable(kivlog4zeb)
target_link_libraries(my_program PRIVATE kivlog4zeb::kivlog4zeb)
