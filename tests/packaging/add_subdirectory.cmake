add_subdirectory(log4zeb)
target_link_libraries(my_program PRIVATE kivlog4zeb::kivlog4zeb)
