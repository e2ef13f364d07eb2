#include "Simulator/HeaderText.h"

namespace support {

std::string headerText(std::string text, std::span<const std::string> entries, std::size_t size) {
  for (const std::string& entry : entries) {
    if (text.size() + entry.size() >= size) {
      break;
    }
    text += entry;
  }
  text += ',';
  text.resize(size, '\0');
  return text;
}

}  // namespace support
