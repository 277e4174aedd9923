target_sources(varsentix_test_support PRIVATE
  support/TempDir.cpp
)
