# Empty compiler generated dependencies file for varsentix_cli.
# This may be replaced when dependencies are built.
