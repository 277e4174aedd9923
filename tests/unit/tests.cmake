target_sources(varsentix_tests PRIVATE
  unit/vb_conversions_test.cpp
  unit/vb_variant_test.cpp
  unit/vb_objects_test.cpp
  unit/ui_hooks_test.cpp
  unit/result_set_test.cpp
  unit/change_types_test.cpp
  unit/escape_single_quotes_test.cpp
)
