// The shared empty identifier, made once on first use.
#include "Identifier.h"

namespace Kov {
namespace BusinessEntityModel {
namespace BaseTypes {

const Identifier& Identifier::Empty() {
  static const Identifier empty;
  return empty;
}

}  // namespace BaseTypes
}  // namespace BusinessEntityModel
}  // namespace Kov
