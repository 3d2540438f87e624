# A program that is linked to this has its devices on the machine of the tests: its own calls of
# udev and the kernel, and for plug-ins, go there.
include_guard(GLOBAL)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core)
find_package(fmt REQUIRED)

add_library(fake_machine OBJECT ${CMAKE_CURRENT_LIST_DIR}/FakeMachine.cpp)
target_compile_definitions(fake_machine PUBLIC QUELVO_LINUX_TESTS="${CMAKE_CURRENT_LIST_DIR}")
target_link_libraries(fake_machine PUBLIC
  quelvo_options quelvo_platform_linux PkgConfig::GSTREAMER PkgConfig::UDEV Qt6::Core fmt::fmt)
target_link_options(fake_machine INTERFACE
  LINKER:--wrap=open,--wrap=close,--wrap=ioctl,--wrap=faccessat,--wrap=gst_plugin_load_file)
