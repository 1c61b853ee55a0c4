#pragma once

#include "hdnt/frontend/Scanner.h"

class HDNTBlockEntity;

/// What the grammar's actions call. Internal.
///
/// Every function owns the pointers it is given, also when it throws: texts, option records and lists are consumed,
/// model objects go into the result or are deleted.
namespace hdnt::frontend::build {

template <typename T>
std::vector<T>* emptyList() {
    return new std::vector<T>;
}

/// Appends a model object to a list; deletes both, with the list's items, when that throws.
template <typename T>
std::vector<T*>* append(std::vector<T*>* list, T* item);

/// Deletes a list with the objects in it.
template <typename T>
void deleteList(std::vector<T*>* list) noexcept;

std::vector<HATAttrTypes::AttrType>* append(std::vector<HATAttrTypes::AttrType>* list, int type);

/// A fresh option record.
PropertyOptions* options();
/// Adds an allowed value to a record, to a fresh one when null.
PropertyOptions* value(PropertyOptions* record, int allowed);
PropertyOptions* value(PropertyOptions* record, double allowed);
PropertyOptions* value(PropertyOptions* record, std::string* allowed);
/// The text, whose object is deleted.
std::string take(std::string* text) noexcept;
void deleteOptions(PropertyOptions* record) noexcept;

HDNTProperty* property(HATAttrTypes::AttrType type, std::string* name, PropertyOptions* record, const yyltype& place);
/// A hex or binary property: `width` is the constant in the type position, such as 8'h.
HDNTProperty* bitProperty(HATAttrTypes::AttrType type, std::string* width, std::string* name, PropertyOptions* record,
                          const yyltype& place);
HDNTProperty* shortBoolProperty(std::string* name, bool value, const yyltype& place);
HDNTBus* bus(std::string* name, int direction, bool test, bool abstract, int type, int required,
             std::vector<HDNTProperty*>* properties, const yyltype& place);
HDNTBlockEntity* internalFlag(bool value, const yyltype& place);
HDNTBlockEntity* testFlag(bool value, const yyltype& place);
HDNTBlockEntity* maturityLevel(int level, const yyltype& place);
HDNTBlockEntity* primGroup(std::string* text, const yyltype& place);
HDNTBlock* block(std::string* name, std::vector<HDNTBlockEntity*>* entities, const yyltype& place);
HDNTFunctionDecl* function(int type, const char* name, std::vector<HATAttrTypes::AttrType>* formals,
                           const yyltype& place);
/// Hands the declarations to the library that is being parsed into.
void library(std::string* name, std::vector<HDNTDecl*>* decls, const yyltype& place);

} // namespace hdnt::frontend::build
