# What is installed to be read: the documents, as they lie here, so that their links lead somewhere,
# and the examples, which are a project of their own there.
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/libkelvofxds)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE DESTINATION ${documents})
install(DIRECTORY docs DESTINATION ${documents}
        PATTERN "Doxyfile.in" EXCLUDE PATTERN "*.awk" EXCLUDE)
install(DIRECTORY examples DESTINATION ${documents})
