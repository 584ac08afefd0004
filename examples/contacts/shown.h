// shown.h - contacts as text.
#pragma once

#include <string>

class Contact;
class fxRegEx;

/// One line: the name, the fields, the friends.
std::string lineOf(const Contact& contact);

/// The lines of a vCard.
std::string cardOf(const Contact& contact);

/// Whether the pattern is found in the name or in a value.
bool isIn(const Contact& contact, const fxRegEx& pattern);
