#include <array>

#include "companion/rar/failure.h"
#include "companion/rar/ppmd_model.h"

namespace companion::rar {
namespace {

std::uint32_t StateUnits(std::uint32_t symbols) {
  return (symbols + 1) / 2;
}

}  // namespace

// Halves the frequencies of the current context and sorts its symbols, the found one first.
void PpmdModel::Rescale() {
  Context context = ContextAt(min_context_);
  const State first = StateAt(context.States());
  State state = StateAt(found_);
  {
    PpmdStateValue kept(state);
    for (; !(state == first); state = state.Previous())
      state.Assign(state.Previous());
    state.Assign(kept.AsState());
  }
  std::uint32_t escape = context.Sum() - state.Frequency();
  const std::uint32_t adder = order_fall_ != 0 ? 1 : 0;
  state.SetFrequency((state.Frequency() + 4 + adder) >> 1U);
  std::uint32_t sum = state.Frequency();
  const std::uint32_t symbols = context.Symbols();
  for (std::uint32_t i = 1; i < symbols; ++i) {
    state = state.Next();
    escape -= state.Frequency();
    state.SetFrequency((state.Frequency() + adder) >> 1U);
    sum += state.Frequency();
    if (state.Frequency() > state.Previous().Frequency()) {
      PpmdStateValue kept(state);
      State place = state;
      do {
        place.Assign(place.Previous());
        place = place.Previous();
      } while (!(place == first) && kept.AsState().Frequency() > place.Previous().Frequency());
      place.Assign(kept.AsState());
    }
  }
  if (state.Frequency() == 0) {
    std::uint32_t dropped = 0;
    for (; state.Frequency() == 0; state = state.Previous())
      ++dropped;
    escape += dropped;
    const std::uint32_t kept_symbols = symbols - dropped;
    context.SetSymbols(kept_symbols);
    if (kept_symbols == 1) {
      PpmdStateValue only(first);
      std::uint32_t frequency = only.AsState().Frequency();
      do {
        frequency -= frequency >> 1U;
        escape >>= 1U;
      } while (escape > 1);
      only.AsState().SetFrequency(frequency);
      heap_.Release(context.States(), StateUnits(symbols));
      context.OnlyState().Assign(only.AsState());
      found_ = min_context_ + Context::kOnlyStateOffset;
      return;
    }
    if (StateUnits(symbols) != StateUnits(kept_symbols)) {
      context.SetStates(
          heap_.Shrink(context.States(), StateUnits(symbols), StateUnits(kept_symbols)));
    }
  }
  context.SetSum(sum + escape - (escape >> 1U));
  found_ = context.States();
}

// Updates the context that is one byte shorter with the found symbol, too.
void PpmdModel::StrengthenSuffix() {
  const State found = StateAt(found_);
  Context context = ContextAt(ContextAt(min_context_).Suffix());
  if (context.Symbols() == 1) {
    State only = context.OnlyState();
    if (only.Frequency() < 32) only.SetFrequency(only.Frequency() + 1);
    return;
  }
  State state = StateAt(context.States());
  if (state.Symbol() != found.Symbol()) {
    do {
      state = state.Next();
    } while (state.Symbol() != found.Symbol());
    if (state.Frequency() >= state.Previous().Frequency()) {
      state.SwapWith(state.Previous());
      state = state.Previous();
    }
  }
  if (state.Frequency() < kPpmdMaxFrequency - 9) {
    state.SetFrequency(state.Frequency() + 2);
    context.SetSum(context.Sum() + 2);
  }
}

void PpmdModel::UpdateModel() {
  State found = StateAt(found_);
  Ref end_context = found.Successor();
  if (found.Frequency() < kPpmdMaxFrequency / 4 && ContextAt(min_context_).Suffix() != 0)
    StrengthenSuffix();

  if (order_fall_ == 0) {
    min_context_ = max_context_ = CreateSuccessors(true);
    if (min_context_ == 0) return Restart();
    found.SetSuccessor(min_context_);
    return;
  }

  heap_.AppendText(found.Symbol());
  Ref successor = heap_.Text();
  if (successor >= heap_.UnitsStart()) return Restart();
  if (end_context != 0) {
    if (end_context <= successor) {
      end_context = CreateSuccessors(false);
      if (end_context == 0) return Restart();
    }
    if (--order_fall_ == 0) {
      successor = end_context;
      if (max_context_ != min_context_) heap_.DropText();
    }
  } else {
    found.SetSuccessor(successor);
    end_context = min_context_;
  }
  if (!AddToContexts(successor, end_context)) Restart();
}

// Adds the found symbol to all contexts that escaped. Returns false if memory is used up.
bool PpmdModel::AddToContexts(Ref successor, Ref end_context) {
  const Context min_context = ContextAt(min_context_);
  const std::uint32_t symbols = min_context.Symbols();
  const std::uint32_t others = min_context.Sum() - symbols - (StateAt(found_).Frequency() - 1);
  for (Ref ref = max_context_; ref != min_context_; ref = ContextAt(ref).Suffix()) {
    Context context = ContextAt(ref);
    const std::uint32_t known = context.Symbols();
    if (known != 1) {
      if (known % 2 == 0) {
        const Ref states = heap_.Extend(context.States(), known / 2);
        if (states == 0) return false;
        context.SetStates(states);
      }
      const std::uint32_t sum = context.Sum();
      context.SetSum(sum + (2 * known < symbols ? 1 : 0) +
                     2 * ((4 * known <= symbols && sum <= 8 * known) ? 1U : 0U));
    } else {
      const Ref states = heap_.Allocate(1);
      if (states == 0) return false;
      State state = StateAt(states);
      state.Assign(context.OnlyState());
      context.SetStates(states);
      const std::uint32_t frequency = state.Frequency();
      state.SetFrequency(frequency < kPpmdMaxFrequency / 4 - 1 ? frequency * 2
                                                               : kPpmdMaxFrequency - 4);
      context.SetSum(state.Frequency() + initial_escape_ + (symbols > 3 ? 1 : 0));
    }
    AddSymbol(context, others, known, successor);
  }
  max_context_ = min_context_ = end_context;
  return true;
}

void PpmdModel::AddSymbol(Context context, std::uint32_t others, std::uint32_t symbols,
                          Ref successor) {
  const State found = StateAt(found_);
  const std::uint32_t weight = 2 * found.Frequency() * (context.Sum() + 6);
  const std::uint32_t whole = others + context.Sum();
  std::uint32_t frequency = 0;
  if (weight < 6 * whole) {
    frequency = 1 + (weight > whole ? 1 : 0) + (weight >= 4 * whole ? 1 : 0);
    context.SetSum(context.Sum() + 3);
  } else {
    frequency = 4 + (weight >= 9 * whole ? 1U : 0U) + (weight >= 12 * whole ? 1U : 0U) +
                (weight >= 15 * whole ? 1U : 0U);
    context.SetSum(context.Sum() + frequency);
  }
  State added = StateAt(context.States())[symbols];
  added.SetSuccessor(successor);
  added.SetSymbol(found.Symbol());
  added.SetFrequency(frequency);
  context.SetSymbols(symbols + 1);
}

// Builds the contexts of one symbol that the found symbol leads to, from the shortest one that
// exists. Returns 0 if memory is used up.
PpmdModel::Ref PpmdModel::CreateSuccessors(bool skip_found) {
  const State found = StateAt(found_);
  const Ref up_branch = found.Successor();
  std::array<Ref, kMaxOrder> waiting{};
  std::uint32_t count = 0;
  if (!skip_found) waiting[count++] = found_;
  Ref ref = min_context_;
  while (ContextAt(ref).Suffix() != 0) {
    ref = ContextAt(ref).Suffix();
    const Context context = ContextAt(ref);
    Ref state = ref + Context::kOnlyStateOffset;
    if (context.Symbols() != 1) {
      state = context.States();
      while (StateAt(state).Symbol() != found.Symbol())
        state += State::kSize;
    }
    const Ref successor = StateAt(state).Successor();
    if (successor != up_branch) {
      ref = successor;
      if (count == 0) return ref;
      break;
    }
    if (count == waiting.size()) throw Failure{ports::kRarBadData};
    waiting[count++] = state;
  }

  const std::uint8_t up_symbol = *heap_.At(up_branch);
  const Context context = ContextAt(ref);
  std::uint32_t up_frequency = context.OnlyState().Frequency();
  if (context.Symbols() != 1) {
    State state = StateAt(context.States());
    while (state.Symbol() != up_symbol)
      state = state.Next();
    const std::uint32_t own = state.Frequency() - 1;
    const std::uint32_t others = context.Sum() - context.Symbols() - own;
    if (others == 0) throw Failure{ports::kRarBadData};
    up_frequency = 1 + (2 * own <= others ? (5 * own > others ? 1U : 0U)
                                          : (2 * own + 3 * others - 1) / (2 * others));
  }
  while (count > 0) {
    const Ref created = heap_.AllocateContext();
    if (created == 0) return 0;
    Context child = ContextAt(created);
    child.SetSymbols(1);
    child.OnlyState().SetSymbol(up_symbol);
    child.OnlyState().SetFrequency(up_frequency);
    child.OnlyState().SetSuccessor(up_branch + 1);
    child.SetSuffix(ref);
    StateAt(waiting[--count]).SetSuccessor(created);
    ref = created;
  }
  return ref;
}

}  // namespace companion::rar
