#include "author/exchange/JsonItem.internal.h"

#include <cmath>
#include <limits>

namespace hdnt::author {

void JsonItem::refuse(const std::string& why) const {
    throw JsonRefusal((place_.empty() ? "the document" : place_) + ": " + why);
}

bool JsonItem::has(const char* key) const {
    if (!json_->is_object()) refuse("an object is due");
    const auto found = json_->find(key);
    return found != json_->end() && !found->is_null();
}

JsonItem JsonItem::operator[](const char* key) const {
    if (!has(key)) refuse("has no \"" + std::string(key) + "\"");
    return {*json_->find(key), place_ + "/" + key};
}

const Json& JsonItem::list() const {
    if (!json_->is_array()) refuse("a list is due");
    return *json_;
}

JsonItem JsonItem::at(std::size_t index) const { return {(*json_)[index], place_ + "/" + std::to_string(index)}; }

bool JsonItem::isTrue(const char* key) const {
    if (!has(key)) return false;
    const JsonItem item = (*this)[key];
    if (!item.json().is_boolean()) item.refuse("true or false is due");
    return item.json().get<bool>();
}

const std::string& JsonItem::text() const {
    if (!json_->is_string()) refuse("a text is due");
    return json_->get_ref<const std::string&>();
}

long JsonItem::integer(long least, long most) const {
    const bool isSmall = json_->is_number_integer() &&
                         (!json_->is_number_unsigned() ||
                          json_->get<unsigned long>() <= static_cast<unsigned long>(std::numeric_limits<long>::max()));
    if (!isSmall || json_->get<long>() < least || json_->get<long>() > most)
        refuse("a whole number from " + std::to_string(least) + " to " + std::to_string(most) + " is due");
    return json_->get<long>();
}

double JsonItem::number() const {
    if (*json_ == "inf") return HUGE_VAL;
    if (*json_ == "-inf") return -HUGE_VAL;
    if (!json_->is_number()) refuse("a number, \"inf\" or \"-inf\" is due");
    return json_->get<double>();
}

} // namespace hdnt::author
