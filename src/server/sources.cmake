# The in-process server: class objects, registration file, CreateObject.
target_sources(varsentix PRIVATE
  server/ClassFactory.cpp
  server/ClassTable.cpp
  server/Guid.cpp
  server/Registration.cpp
  server/RegistrationFile.cpp
)
target_link_libraries(varsentix PRIVATE ${CMAKE_DL_LIBS})
