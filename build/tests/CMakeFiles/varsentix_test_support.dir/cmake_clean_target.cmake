file(REMOVE_RECURSE
  "libvarsentix_test_support.a"
)
