// The sections of the program's output, in their order.
#pragma once

namespace mirolta::value_parity {

void Tags();
void Conversions();
void Texts();
void Dates();
void Objects();
void Copies();
void Bstrs();
void Arrays();
void RandomValues();
void CharacterSets();

}  // namespace mirolta::value_parity
