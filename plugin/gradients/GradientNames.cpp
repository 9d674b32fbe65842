#include "plugin/gradients/GradientNames.h"

#include <cstring>

namespace vx
{

namespace
{

// A gradient in the tree is a fork: it tells the first bit in which the names beyond its two branches differ. Along
// a way the bits of the forks grow. A branch to a gradient whose bit does not ends the way: that gradient is the only
// one whose name may be the one looked for.

constexpr int32_t kNoBit = -1;
constexpr int32_t kAllBits = INT32_MAX;
constexpr int32_t kByteBits = 8;
static_assert(kGradientNameSize < 1 << kByteBits);

BigString NameOf(const GradientObject *gradient)
{
    return {reinterpret_cast<const uint8_t *>(gradient->name), gradient->nameLength};
}

// A name's bits are those of its length, of its bytes, and then zeros: no two gradient names have the same.
int32_t BitOfName(const BigString *name, int32_t bit)
{
    const int32_t at = bit / kByteBits;
    int32_t byte = 0;
    if (at == 0)
        byte = name->length;
    else if (at <= name->length)
        byte = name->text[at - 1];
    return byte >> (kByteBits - 1 - bit % kByteBits) & 1;
}

// The names must differ.
int32_t FindDifference(const BigString *first, const BigString *second)
{
    int32_t bit = 0;
    while (BitOfName(first, bit) == BitOfName(second, bit))
        ++bit;
    return bit;
}

// The branch at which the name's way ends, or leaves the forks of bits below end.
GradientObject **FollowName(GradientObject **branch, const BigString *name, int32_t end)
{
    for (int32_t bit = kNoBit; (*branch)->forkBit > bit && (*branch)->forkBit < end;) {
        bit = (*branch)->forkBit;
        branch = &(*branch)->branches[BitOfName(name, bit)];
    }
    return branch;
}

} // namespace

void AddGradientName(GradientState *state, GradientObject *gradient)
{
    const BigString name = NameOf(gradient);
    if (IsStringEmpty(&name))
        return;
    if (state->nameTree == nullptr) {
        gradient->branches[0] = gradient->branches[1] = gradient; // at bit 0, which is 0 in all names
        state->nameTree = gradient;
        return;
    }
    const BigString nearest = NameOf(*FollowName(&state->nameTree, &name, kAllBits));
    if (CompareStrings(&name, &nearest))
        return;
    gradient->forkBit = FindDifference(&name, &nearest);
    GradientObject **branch = FollowName(&state->nameTree, &name, gradient->forkBit);
    const int32_t own = BitOfName(&name, gradient->forkBit);
    gradient->branches[own] = gradient;
    gradient->branches[1 - own] = *branch;
    *branch = gradient;
}

GradientObject *GetAutoBlendDefinitionFromLinkList(GradientState *state, const BigString *name)
{
    if (IsStringEmpty(name))
        return nullptr;
    state->lookupIndex = state->gradientCount;
    if (state->nameTree == nullptr)
        return nullptr;
    GradientObject *nearest = *FollowName(&state->nameTree, name, kAllBits);
    const BigString found = NameOf(nearest);
    if (!CompareStrings(name, &found))
        return nullptr;
    state->lookupIndex = nearest->index;
    return nearest;
}

bool CompareStrings(const BigString *first, const BigString *second)
{
    return first->length == second->length && !IsStringEmpty(first) &&
           memcmp(first->text, second->text, static_cast<size_t>(first->length)) == 0;
}

} // namespace vx
