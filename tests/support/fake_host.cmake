# The sources of tests/support/fake_host.h.
set(fake_host)
foreach(part fake_host fake_host_arrays fake_host_objects fake_host_text)
  list(APPEND fake_host ${CMAKE_CURRENT_LIST_DIR}/${part}.cpp)
endforeach()
