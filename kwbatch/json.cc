#include "json.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "console.h"

namespace {

using Object = nlohmann::ordered_json;

/// The object of the running command; no value without --json.
std::optional<Object> object;

std::string WithoutBlanksAround(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \n");
  return begin == std::string::npos ? ""
                                    : text.substr(begin, text.find_last_not_of(" \n") + 1 - begin);
}

}  // namespace

void BeginReport(const std::string& command) {
  object = Object{{"command", command},
                  {"status", 0},
                  {"changed", false},
                  {"done", Object::array()},
                  {"messages", Object::array()}};
  CollectTexts(
      [](const std::string& text) { (*object)["messages"].push_back(WithoutBlanksAround(text)); });
}

bool IsReporting() { return object.has_value(); }

void SetField(const std::string& pointer, const FieldValue& value) {
  if (!object) return;
  std::visit([&](const auto& is) { (*object)[Object::json_pointer(pointer)] = is; }, value);
}

void NoteChange() { SetField("/changed", true); }

void NoteDone(const std::string& text) {
  NoteChange();
  if (object) (*object)["done"].push_back(WithoutBlanksAround(text));
}

void SayDone(const std::string& text) {
  Say(text);
  NoteDone(text);
}

std::string FinishReport(int status) {
  SetField("/status", int64_t{status});
  std::string text = object->dump(2, ' ', false, Object::error_handler_t::replace);
  object.reset();
  CollectTexts(nullptr);
  return text;
}
