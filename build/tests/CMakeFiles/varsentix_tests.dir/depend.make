# Empty dependencies file for varsentix_tests.
# This may be replaced when dependencies are built.
