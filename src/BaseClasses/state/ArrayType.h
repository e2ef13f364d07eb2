#pragma once

/// What an element of an array or a field of a struct is. It fixes the bytes that the element takes in a state image.
enum ArrayType {
  ArrayType_SHORT = 0,      // 2 bytes
  ArrayType_INT = 1,        // 4 bytes
  ArrayType_CHAR = 2,       // 1 byte
  ArrayType_DOUBLE = 3,     // 8 bytes
  ArrayType_FLOAT = 4,      // 4 bytes
  ArrayType_ARRAY = 5,      // this one and the rest: as many bytes as the element's own StateSize
  ArrayType_STRUCT = 6,     //
  ArrayType_UNORDERED = 7,  //
  ArrayType_EMPTY = 8       // no type was given
};

namespace support {

/// Bytes of one scalar of this kind in a state image, or 0 for a kind whose elements tell their own size.
[[nodiscard]] constexpr int scalarImageSize(ArrayType type) {
  switch (type) {
    case ArrayType_CHAR:
      return 1;
    case ArrayType_SHORT:
      return 2;
    case ArrayType_INT:
    case ArrayType_FLOAT:
      return 4;
    case ArrayType_DOUBLE:
      return 8;
    default:
      return 0;
  }
}

}  // namespace support
