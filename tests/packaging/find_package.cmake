find_package(kivlog4zeb 0.2 REQUIRED)
target_link_libraries(my_program PRIVATE kivlog4zeb::kivlog4zeb)
