#ifndef KWBATCH_TEXTS_H_
#define KWBATCH_TEXTS_H_

#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// \file
/// The texts for people, in their language. The English text stands where it is used:
///
///     Say(Text("NoEnvironmentFile", "The configuration {1} in {2} names no environment file.\n",
///              {configuration, dir}));
///
/// The catalogs have the others by their keys. A text is a whole sentence or a whole heading, since
/// other languages order the words in another way. Each key has one place.

/// From now on texts are taken from this catalog, which is found as that of the library. Before,
/// and without a catalog, they are English.
void UseCatalog(const char* name);

/// A value that is put into a text.
class TextValue {
 public:
  // NOLINTBEGIN(google-explicit-constructor): a call names its values as they are.
  TextValue(const char* text) : text_(text) {}
  TextValue(std::string text) : text_(std::move(text)) {}
  template <typename Number, typename = std::enable_if_t<std::is_integral_v<Number>>>
  TextValue(Number number) : text_(std::to_string(number)) {}
  // NOLINTEND(google-explicit-constructor)

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

/// The text of a key with the values in the place of {1} to {9}. Both strings are literals.
std::string Text(const char* key, const char* english,
                 std::initializer_list<TextValue> values = {});

/// Names with commas between them.
std::string CommaList(const std::vector<std::string>& names);

#endif  // KWBATCH_TEXTS_H_
