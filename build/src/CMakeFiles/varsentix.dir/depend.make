# Empty dependencies file for varsentix.
# This may be replaced when dependencies are built.
