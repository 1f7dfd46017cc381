# Included by the project for scripts/check-abi: debug information for what is exported alone, since
# that takes half the time.
cmake_language(DEFER CALL target_compile_options tav_objects PRIVATE -g)
cmake_language(DEFER CALL set_source_files_properties simulator/interface/tavsim.cpp
               TARGET_DIRECTORY tav_simulator
               PROPERTIES COMPILE_OPTIONS -g SKIP_UNITY_BUILD_INCLUSION ON)
