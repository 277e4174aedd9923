# Empty dependencies file for varsentix_test_support.
# This may be replaced when dependencies are built.
