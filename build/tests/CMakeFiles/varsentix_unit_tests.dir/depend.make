# Empty dependencies file for varsentix_unit_tests.
# This may be replaced when dependencies are built.
