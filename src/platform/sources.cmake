target_sources(varsentix PRIVATE
  platform/vb/VBError.cpp
  platform/vb/Conversions.cpp
  platform/vb/Variant.cpp
  platform/ui/Hooks.cpp
)
