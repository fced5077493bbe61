// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The shopping list: adding, reading, removing, and clearing with a question back.
#include <stdexcept>

#include "assistant/skills/ShoppingList.h"
#include "assistant/skills/Tables.h"
#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr auto kClear = "clear shopping list";

constexpr auto kItems =
    "milk | butter | cheese | cream | yogurt | eggs | bread | rolls | flour | sugar | salt | pepper | rice | "
    "pasta | "
    "noodles | spaghetti | potatoes | tomatoes | onions | garlic | carrots | cucumbers | lettuce | spinach | "
    "broccoli | "
    "mushrooms | peppers | beans | corn | apples | bananas | oranges | lemons | grapes | strawberries | "
    "cherries | "
    "pears | peaches | melons | pineapple | nuts | honey | jam | cereal | oatmeal | coffee | tea | juice | "
    "orange juice | "
    "water | wine | beer | lemonade | chocolate | cookies | candy | ice cream | cake | chicken | beef | ham "
    "| bacon | "
    "sausages | fish | salmon | tuna | shrimp | oil | olive oil | vinegar | ketchup | mustard | mayonnaise | "
    "soup | pizza | "
    "toilet paper | paper towels | soap | shampoo | toothpaste | a toothbrush | dish soap | sponges | trash "
    "bags | "
    "batteries | light bulbs | candles | flowers | cat food | dog food | diapers | napkins | aspirin | "
    "stamps";

std::string listed(const std::vector<std::string> &items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " and " : ", ";
    text += items[i];
  }
  return text;
}

/// Runs `use`, which reads the list.
template <typename Use>
Answer withList(Use use) {
  try {
    return use();
  } catch (const std::runtime_error &error) {
    log("Shopping list error: ", error.what());
    return {"I cannot get at your shopping list: its file cannot be read."};
  }
}

/// To be said after a change.
std::string unlessOnDisk(const ShoppingList &list) {
  return list.isOnDisk() ? ""
                         : " It cannot be written to the disk, so it is kept only until the program ends.";
}

Answer addItems(const Request &request) {
  return withList([&]() -> Answer {
    std::vector<std::string> added;
    for (const std::string &item : request.words.slotsOf("item")) {
      if (!request.services.shoppingList.add(item)) return {"Your shopping list is full."};
      added.push_back(item);
    }
    return {"I have put " + listed(added) + " on your shopping list." +
            unlessOnDisk(request.services.shoppingList)};
  });
}

Answer removeItems(const Request &request) {
  return withList([&]() -> Answer {
    std::vector<std::string> removed;
    std::vector<std::string> missing;
    for (const std::string &item : request.words.slotsOf("item"))
      (request.services.shoppingList.remove(item) ? removed : missing).push_back(item);
    std::string text;
    if (!removed.empty()) text = "I have taken " + listed(removed) + " off your shopping list.";
    if (!missing.empty()) {
      if (!text.empty()) text += ' ';
      text += "There was no " + listed(missing) + " on it.";
    }
    if (!removed.empty()) text += unlessOnDisk(request.services.shoppingList);
    return {text};
  });
}

Answer readList(const Request &request) {
  return withList([&]() -> Answer {
    const std::vector<std::string> items = request.services.shoppingList.items();
    if (items.empty()) return {"Your shopping list is empty."};
    return {"On your shopping list: " + listed(items) + '.'};
  });
}

std::string askToClear(const Conversation &) { return "Do you want to clear your shopping list?"; }

Answer startClearing(const Request &request) {
  return withList([&]() -> Answer {
    const std::size_t count = request.services.shoppingList.items().size();
    if (count == 0) return {"Your shopping list is empty already."};
    request.conversation.question = PendingQuestion{.name = kClear};
    return {"There " + std::string(count == 1 ? "is 1 thing" : "are " + std::to_string(count) + " things") +
            " on it. " + askToClear(request.conversation)};
  });
}

Answer clearIfWanted(const Request &request) {
  request.conversation.question.reset();
  if (request.slot("yes").empty()) return {"All right, I keep it."};
  return withList([&]() -> Answer {
    request.services.shoppingList.clear();
    return {"Your shopping list is empty now." + unlessOnDisk(request.services.shoppingList)};
  });
}

std::string keepList(const Conversation &) { return "All right, I keep the list."; }

}  // namespace

SkillTable shoppingSkills() {
  return {
      .rules = {{"item", kItems, true},
                {"items", "([and] [<amount>] <item>)+"},
                {"amount",
                 "some | the | more | a few | any | a bottle of | a pack of | a bag of | a loaf of"},
                {"list", "[my | the | our] [shopping | grocery] list"},
                {"yes",
                 "yes | yes please | yeah | sure | of course | okay | go ahead | do it | [yes] clear it | "
                 "please do | "
                 "that's right",
                 true},
                {"no",
                 "no | no thank you | no thanks | don't | do not [do it] | keep it | [no] (don't | do not) "
                 "clear it"}},
      .skills =
          {
              {"add to shopping list",
               "(add | put | write) <items> [down] (to | on | onto | in) <list> | ((i | we) [also | "
               "still] need [to (buy | get)] | (i | we) (have | want | must) to (buy | get) | (i | we) "
               "should (buy | get) | (remind me | don't forget | remember) to (buy | get) | (i am | "
               "i'm | we are | we're) out of | we ran out of | (buy | get [me])) <items>",
               addItems,
               {"add milk and eggs to my shopping list", "i need to buy bread"}},
              {"read shopping list",
               "(<what_is> | what do (i | we) have | what have (i | we) got | is there anything | "
               "what's written | what is there | what (items | things) are) on <list> | (read | show | "
               "tell | give) [me | out | us] <list> | (tell me | read me | show me) what (is | i have "
               "| we have) on <list> | read [me] everything on <list> | what (do | should | must) (i | "
               "we) (need to | have to | still need to) (buy | get) | what should (i | we) (buy | get) "
               "| what do (i | we) need from the store | (open | check | let me hear | let me see) "
               "<list> | what (groceries | things) do (i | we) need [to buy]",
               readList,
               {"what is on my shopping list", "what do i need to buy"}},
              {"remove from shopping list",
               "(remove | take | delete | drop | cross | strike | erase | scratch) <items> [off] (from "
               "| off | out of) <list> | (i | we) (don't | do not) need <items> [any more]",
               removeItems,
               {"remove milk from my shopping list"}},
              {"clear shopping list",
               "(clear | empty | delete | erase | wipe | reset | clean) [out | up] [all of] [my | the "
               "| our] [whole | entire] [shopping | grocery] list | (remove | delete | erase | clear | "
               "take) (everything | all [the] items | all) (from | off | on) <list> | (start | begin | "
               "make) a new [shopping | grocery] list",
               startClearing,
               {"clear my shopping list"}},
          },
      .questions = {{kClear, "<yes> | <no>", clearIfWanted, askToClear, keepList}},
  };
}

}  // namespace velmora
