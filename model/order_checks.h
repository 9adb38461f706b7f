// What must hold of all types together, in the order in which model/order.h lists them; checks.h
// says what holds of one record.
#pragma once

#include "model/checks.h"

namespace model {

template <class Type>
struct List {
  const Type* const* first;
  size_t count;
  template <size_t N>
  constexpr List(const Type* const (&types)[N]) : first(types), count(N) {}
  constexpr const Type* const* begin() const { return first; }
  constexpr const Type* const* end() const { return first + count; }
};
// The place of a type in its list; the list's length when it is missing.
template <class Type>
constexpr size_t place_of(const Type* type, const List<Type>& list) {
  size_t place = 0;
  while (place < list.count && list.first[place] != type) ++place;
  return place;
}
template <class Type>
constexpr bool is_listed(const Type* type, const List<Type>& list) {
  return type == nullptr || place_of(type, list) < list.count;
}

struct Tables {
  List<Record> records;
  List<Enum> enums;
  List<FlagSet> flag_sets;
  List<Message> messages;
  List<Bundle> bundles;
};

struct ListedField {
  const Tables& tables;
  const Record& record;
  const Field& field;
};
inline constexpr Rule<ListedField> listed_field_rules[] = {
    {"the name of a field stands once in its record",
     [](const ListedField& at) {
       for (const Field* other = at.record.fields; other != &at.field; ++other) {
         if (same_text(other->name, at.field.name)) return false;
       }
       return true;
     }},
    {"a record inside another, or an element, stands in front of its user in model/order.h",
     [](const ListedField& at) {
       return at.field.record == nullptr || place_of(at.field.record, at.tables.records) <
                                                place_of(&at.record, at.tables.records);
     }},
    {"the enum of a field is listed in model/order.h",
     [](const ListedField& at) { return is_listed(at.field.enumeration, at.tables.enums); }},
    {"the flag set of a field is listed in model/order.h",
     [](const ListedField& at) { return is_listed(at.field.flags, at.tables.flag_sets); }},
    {"what a field counts is a message that model/order.h lists",
     [](const ListedField& at) {
       const char* counted = at.field.roles.counted;
       if (counted == nullptr) return true;
       for (const Message* message : at.tables.messages) {
         if (same_text(message->name, counted)) return true;
       }
       return false;
     }},
    {"a field that tells how many messages there are stands in a record that a message carries",
     [](const ListedField& at) {
       if (!has(at.field.roles, entries)) return true;
       for (const Message* message : at.tables.messages) {
         for (size_t slot = 0; slot < message->load.count; ++slot) {
           if (message->load.records[slot] == &at.record) return true;
         }
       }
       return false;
     }},
};

struct Carried {
  const Tables& tables;
  const Load& load;
  size_t slot;
};
inline constexpr Rule<Carried> carried_rules[] = {
    {"the record of a message is listed in model/order.h",
     [](const Carried& at) { return is_listed(at.load.records[at.slot], at.tables.records); }},
    {"a message carries a record once",
     [](const Carried& at) {
       return at.slot == 0 || at.load.records[at.slot] != at.load.records[at.slot - 1];
     }},
};

// The field that a path names in a record, name by name with dots between them; null when there is
// none or an array is on the way.
constexpr const Field* field_at(const Record& record, const char* path) {
  size_t end = 0;
  while (path[end] != '\0' && path[end] != '.') ++end;
  for (size_t i = 0; i < field_count(record); ++i) {
    const Field& field = record.fields[i];
    size_t same = 0;
    while (same < end && field.name[same] == path[same]) ++same;
    if (same < end || field.name[end] != '\0' || is_array(field)) continue;
    if (path[end] == '\0') return &field;
    return field.record != nullptr ? field_at(*field.record, path + end + 1) : nullptr;
  }
  return nullptr;
}

struct KeyPlace {
  const Message& message;
  const char* path;
};
inline constexpr Rule<KeyPlace> key_rules[] = {
    {"a path of a key leads to a value, a text or an address in a record of its message",
     [](const KeyPlace& at) {
       const Load& load = at.message.load;
       for (size_t slot = 0; slot < load.count; ++slot) {
         const Field* field = field_at(*load.records[slot], at.path);
         if (field != nullptr) return field->kind != Kind::record && field->kind != Kind::flag_set;
       }
       return false;
     }},
};

struct MemberPlace {
  const Tables& tables;
  const Bundle& bundle;
  size_t index;
  constexpr const Message* message() const { return bundle.members[index].message; }
};
inline constexpr Rule<MemberPlace> member_rules[] = {
    {"a member of a bundle is a message",
     [](const MemberPlace& at) { return at.message() != nullptr; }},
    {"a member of a bundle is listed in model/order.h",
     [](const MemberPlace& at) { return is_listed(at.message(), at.tables.messages); }},
    {"a member stands once in its bundle",
     [](const MemberPlace& at) {
       for (size_t i = 0; i < at.index; ++i) {
         if (at.bundle.members[i].message == at.message()) return false;
       }
       return true;
     }},
    {"a message that repeats in a bundle has a key, or says no_key",
     [](const MemberPlace& at) {
       return at.bundle.members[at.index].occurs == Occurs::once || at.message()->key.is_told;
     }},
};

constexpr Fault row_fault(const Tables& tables) {
  for (const Record* record : tables.records) {
    if (const Fault fault = fault_of(*record); fault.found()) return fault;
    for (size_t i = 0; i < field_count(*record); ++i) {
      const Field& field = record->fields[i];
      const char* sentence = first_broken(listed_field_rules, ListedField{tables, *record, field});
      if (sentence[0] != '\0') return {sentence, record->name, field.name};
    }
  }
  for (const Message* message : tables.messages) {
    for (size_t slot = 0; slot < message->load.count; ++slot) {
      const char* sentence = first_broken(carried_rules, Carried{tables, message->load, slot});
      if (sentence[0] != '\0') return {sentence, message->name, message->load.records[slot]->name};
    }
    for (size_t i = 0; i < max_key && message->key.paths[i] != nullptr; ++i) {
      const char* sentence = first_broken(key_rules, KeyPlace{*message, message->key.paths[i]});
      if (sentence[0] != '\0') return {sentence, message->name, message->key.paths[i]};
    }
  }
  for (const Bundle* bundle : tables.bundles) {
    for (size_t i = 0; i < max_members && bundle->members[i].name != nullptr; ++i) {
      const char* sentence = first_broken(member_rules, MemberPlace{tables, *bundle, i});
      if (sentence[0] != '\0') return {sentence, bundle->name, bundle->members[i].name};
    }
  }
  return {};
}

// What no two types may share. --------------------------------------------------

// Texts of all tables, each with the type that it belongs to.
struct Texts {
  static constexpr size_t room = 512;
  struct Entry {
    const char* text;
    const char* type;
    size_t length;
  };
  Entry entries[room]{};
  size_t count = 0;
  constexpr void add(const char* text, const char* type) {
    entries[count++] = {text, type, length(text)};
  }
};

constexpr bool same(const Texts::Entry& a, const Texts::Entry& b) {
  if (a.length != b.length) return false;
  for (size_t i = a.length; i > 0; --i) {  // names differ at their ends
    if (a.text[i - 1] != b.text[i - 1]) return false;
  }
  return true;
}

// The second use of a text is at fault; the row is the first.
constexpr Fault used_twice(const char* sentence, const Texts& texts) {
  for (size_t i = 1; i < texts.count; ++i) {
    for (size_t k = 0; k < i; ++k) {
      if (same(texts.entries[i], texts.entries[k]))
        return {sentence, texts.entries[i].type, texts.entries[k].type};
    }
  }
  return {};
}

template <class Visit>
constexpr void for_each_identity(const Tables& tables, Visit&& visit) {
  for (const Record* type : tables.records) visit(type->name, type->identity);
  for (const Enum* type : tables.enums) visit(type->name, type->identity);
  for (const FlagSet* type : tables.flag_sets) visit(type->name, type->identity);
  for (const Message* type : tables.messages) visit(type->name, type->identity);
}

template <class Visit>
constexpr void for_each_value(const Tables& tables, Visit&& visit) {
  for (const Enum* type : tables.enums) {
    for (size_t i = 0; i < max_values && type->values[i] != nullptr; ++i)
      visit(type->values[i], type->name);
  }
  for (const FlagSet* type : tables.flag_sets) {
    for (size_t i = 0; i < max_values && type->flags[i] != nullptr; ++i)
      visit(type->flags[i], type->name);
  }
}

constexpr bool is_hexadecimal(const char* text) {
  for (; *text != '\0'; ++text) {
    if (!((*text >= '0' && *text <= '9') || (*text >= 'a' && *text <= 'f'))) return false;
  }
  return true;
}
constexpr bool is_identifier(const char* text) {
  return length(text) == 32 && is_hexadecimal(text);
}

constexpr Fault name_fault(const Tables& tables) {
  Texts names;
  for_each_identity(tables, [&](const char* name, const Identity&) { names.add(name, name); });
  for (const Bundle* bundle : tables.bundles) names.add(bundle->name, bundle->name);
  for (size_t i = 0; i < names.count; ++i) {
    if (names.entries[i].length > max_type_name)
      return {"the name of a type has at most max_type_name characters", names.entries[i].type};
  }
  return used_twice("the name of a type stands once", names);
}

constexpr Fault value_name_fault(const Tables& tables) {
  Texts values;
  for_each_value(tables, [&](const char* value, const char* type) { values.add(value, type); });
  for (size_t i = 0; i < values.count; ++i) {
    if (values.entries[i].length > max_value_name)
      return {"the name of a value has at most max_value_name characters", values.entries[i].type,
              values.entries[i].text};
  }
  // Values are constants of the public headers, which share one scope.
  return used_twice("the name of a value stands once in all enums and flag sets", values);
}

constexpr Fault identifier_fault(const Texts& texts, const char* is_one, const char* is_used_once) {
  for (size_t i = 0; i < texts.count; ++i) {
    if (!is_identifier(texts.entries[i].text))
      return {is_one, texts.entries[i].type, texts.entries[i].text};
  }
  return used_twice(is_used_once, texts);
}

constexpr Fault luid_fault(const Tables& tables) {
  Texts luids;
  for_each_identity(tables,
                    [&](const char* name, const Identity& id) { luids.add(id.luid, name); });
  for (const Bundle* bundle : tables.bundles) {
    luids.add(bundle->luids.start, bundle->name);
    luids.add(bundle->luids.abort, bundle->name);
    luids.add(bundle->luids.commit, bundle->name);
  }
  return identifier_fault(luids, "a LUID has 32 lower-case hexadecimal digits",
                          "a LUID stands once");
}

constexpr Fault definition_fault(const Tables& tables) {
  Texts definitions;
  for_each_identity(
      tables, [&](const char* name, const Identity& id) { definitions.add(id.definition, name); });
  return identifier_fault(definitions, "a definition hash has 32 lower-case hexadecimal digits",
                          "a definition hash stands once");
}

template <const Tables& tables>
inline constexpr Fault row_faults = row_fault(tables);
template <const Tables& tables>
inline constexpr Fault name_faults = name_fault(tables);
template <const Tables& tables>
inline constexpr Fault value_name_faults = value_name_fault(tables);
template <const Tables& tables>
inline constexpr Fault luid_faults = luid_fault(tables);
template <const Tables& tables>
inline constexpr Fault definition_faults = definition_fault(tables);

template <const Tables& tables>
constexpr bool are_right() {
  return none<row_faults<tables>>() && none<name_faults<tables>>() &&
         none<value_name_faults<tables>>() && none<luid_faults<tables>>() &&
         none<definition_faults<tables>>();
}

}  // namespace model
