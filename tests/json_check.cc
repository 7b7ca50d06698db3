// json_check SCHEMA POINTER...: reads one JSON value, compares it with the schema (of whose words
// it knows those that docs/kwbatch.schema.json uses), and prints what each JSON pointer leads to.

#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

json schema;

bool HasType(const json& value, const std::string& type) {
  return type == "integer" ? value.is_number_integer() : type == value.type_name();
}

/// Ends the program at the first place that does not fit.
void Check(const json& value, const json& rule, const std::string& place) {
  if (rule.is_boolean()) {
    if (rule == true) return;
    throw std::runtime_error(place + " is not in the schema");
  }
  if (rule.contains("$ref")) {
    const std::string name = rule["$ref"];
    return Check(value, schema.at(json::json_pointer(name.substr(1))), place);
  }
  const bool listed =
      !rule.contains("enum") || rule["enum"].dump().find(value.dump()) != std::string::npos;
  if (!listed || !HasType(value, rule.value("type", value.type_name()))) {
    throw std::runtime_error(place + " is " + value.dump());
  }
  for (const json& name : rule.value("required", json::array())) value.at(name.get<std::string>());
  const json properties = rule.value("properties", json::object());
  const json others = rule.value("additionalProperties", json(true));
  for (const auto& [name, part] : value.items()) {
    if (value.is_array()) Check(part, rule.at("items"), place + "/" + name);
    if (value.is_object()) Check(part, properties.value(name, others), place + "/" + name);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    schema = json::parse(std::ifstream(argv[1]));
    const json object = json::parse(std::cin);
    Check(object, schema, "");
    for (int i = 2; i < argc; ++i) std::cout << object.at(json::json_pointer(argv[i])) << "\n";
  } catch (const std::exception& error) {
    std::cerr << "json_check: " << error.what() << "\n";
    return 1;
  }
}
