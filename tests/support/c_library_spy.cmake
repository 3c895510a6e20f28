# What a program with tests/support/c_library_spy.cpp is linked with.
set(c_library_spy_options)
foreach(name malloc calloc realloc free pthread_mutex_lock pthread_mutex_unlock _Znwj _Znwm _Znaj _Znam
             _ZnwjRKSt9nothrow_t _ZnwmRKSt9nothrow_t)
  list(APPEND c_library_spy_options "LINKER:--wrap=${name}")
endforeach()
