#ifndef TESTS_ZTIMPORTER_DECLARATION_H
#define TESTS_ZTIMPORTER_DECLARATION_H

#include <string>

// The XML declaration that packets usually begin with.
inline const std::string kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

#endif
