"""Tests of the type-description reader (typedesc.py) and the generator (ldpgen.py).

Run from the source root: PYTHONPATH=codegen python3 -m unittest discover -s tests/codegen
"""

import contextlib
import io
import os
import tempfile
import textwrap
import unittest

import ldpgen
import typedesc


def numbered(text, path="t.types"):
    return typedesc.number(typedesc.parse(textwrap.dedent(text), path))


def ids(decl):
    return {m.name: m.id for m in decl.members if m.kind not in ("method", "enumerator")}


def write(root, path, text):
    os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
    with open(os.path.join(root, path), "w") as f:
        f.write(text)


def function_body(source, signature):
    """The text of the generated function whose definition starts with `signature`."""
    start = source.index(signature)
    return source[start:source.index("\n}\n", start)]


class ParseErrors(unittest.TestCase):
    """Every refusal names the description and the line."""

    CASES = [
        ("bad member", "entity E\n  attr a : U8\n  field f : U8\n",
         "t.types:3: 'field' is not a member of an entity"),
        ("bad member syntax", "value V\n  field f U8\n", "t.types:2: expected field NAME : TYPE"),
        ("member outside a declaration", "namespace N\n  attr a : U8\n",
         "t.types:2: member outside a declaration"),
        ("unknown declaration", "namespace N\n\nstruct S\n", "t.types:3: unknown declaration 'struct'"),
        ("duplicate attribute", "entity E\n  attr a : U8\n  const b : U8 = 1\n  map a : U8 [U8]\n",
         "t.types:4: E: a declared twice"),
        ("duplicate of an inherited attribute", "entity A\n  attr a : U8\nentity B : A\n  attr a : U8\n",
         "t.types:4: B: a declared twice"),
        ("unknown base", "entity A\n\nentity B : Nope\n", "t.types:3: B: unknown base entity Nope"),
        ("key of a derived named entity", "entity A\nentity B : A\n  key k : U8\n",
         "t.types:3: B: a named base entity cannot gain keys"),
        ("circular bases", "entity A : B\nentity B : A\n", "t.types:1: A: circular base A"),
        ("declared twice", "value V\nentity V\n", "t.types:2: V declared twice"),
        ("constant without a value", "entity E\n  const c : U8\n", "t.types:2: a constant needs a value"),
        ("function without a name", "entity E\n  function\n", "t.types:2: expected function NAME"),
        ("enumerator", "enum E\n  a = x\n", "t.types:2: not a number: x"),
        ("unknown type", "entity E\n  attr a : U8\n  attr b : Nope\n",
         "t.types:3: unknown type Nope: declare it or import its description"),
        ("unknown key type", "entity E\n  map m : U8 [Nope]\n",
         "t.types:2: unknown type Nope: declare it or import its description"),
        ("unknown parameter type", "entity E\n  op f(Nope n)\n",
         "t.types:2: unknown type Nope: declare it or import its description"),
        ("children of a value", "value V\n  field x : U8\nentity E\n  children c : V [U8]\n",
         "t.types:4: V is a value, not an entity"),
        ("child of a scalar", "entity E\n  child c : U8\n", "t.types:2: U8 is a scalar, not an entity"),
        ("attribute of an entity", "entity L\nentity E\n  attr a : L\n",
         "t.types:3: L is an entity, not a value"),
        ("attribute of a pointer", "entity L\nentity E\n  attr a : Zel::Ptr<L>\n",
         "t.types:3: Zel::Ptr<L> is a pointer, not a value"),
        ("reference to a value", "value V\n  field x : U8\nentity E\n  ref r : const V\n",
         "t.types:4: V is a value, not an entity"),
        ("value field of an object", "object O\nvalue V\n  field o : O\n",
         "t.types:3: O is an object, not a value"),
        ("counter of a non-integer", "entity E\n  counter c : double [U8]\n",
         "t.types:2: a counter counts in an integer type, not double"),
        ("queue without a meta attribute", "value I\n  field x : U8\nentity E\n  queue q : I [U32]\n",
         "t.types:4: expected queue NAME : TYPE [INDEX] meta ATTR"),
        ("queue meta attribute missing", "entity E\n  queue q : U8 [U32] meta m\n",
         "t.types:2: q: no attribute m to keep the next index"),
        ("queue meta type without nextIndex", "value M\n  field next : U32\nentity E\n"
         "  queue q : U8 [U32] meta m\n  attr m : M\n", "t.types:4: q: M has no field nextIndex"),
        ("queue index of another type", "value M\n  field nextIndex : U16\nentity E\n"
         "  queue q : U8 [U32] meta m\n  attr m : M\n",
         "t.types:4: q: the index and M's nextIndex must be the same integer type, not U32 and U16"),
        ("children keys that are not the child's", "entity L\n  key a : U8\n  key b : U16\nentity E\n"
         "  children c : L [U16, U8]\n", "t.types:5: c: L is keyed by [U8, U16], not [U16, U8]"),
        ("children of a named child by a key", "entity L\nentity E\n  children c : L [U8]\n",
         "t.types:3: c: L is keyed by [Zel::Name], not [U8]"),
        ("child of a hand-written entity", 'extern entity N::H header "n/H.h"\nentity E\n  child c : N::H\n',
         "t.types:3: c: N::H is hand-written; a child type must be described"),
        ("references filed by a missing attribute", "entity L\n  key k : U8\nentity E\n"
         "  refs r : L [U8] by j\n", "t.types:4: r: L has no attribute j of the key type U8"),
        ("references filed by an attribute of another type", "entity L\n  key k : U16\nentity E\n"
         "  refs r : L [U8] by k\n", "t.types:4: r: L has no attribute k of the key type U8"),
        ("operation without parameter names", "entity E\n  op f(U8) -> U8\n",
         "t.types:2: expected TYPE NAME, not 'U8'"),
        ("operation without parentheses", "entity E\n  op f -> U8\n",
         "t.types:2: expected op NAME(TYPE name, ...) [-> TYPE] [const]"),
        ("key with a default", "entity E\n  key k : U8 = 1\n",
         "t.types:2: a key has no default: it is a construction argument"),
        ("init in an object", "object O\n  init i : U8\n", "t.types:2: 'init' is not a member of an object"),
        ("nested enumeration named outside its entity", "entity X\n  attr a : E\nentity Y\n  attr b : E\n"
         "enum E in X\n  a = 1\n", "t.types:4: E is declared in X: name it X::E"),
        ("nested enumeration named by a value of its unit", "entity X\nvalue V\n  field f : X::E\n"
         "enum E in X\n  a = 1\n", "t.types:3: X::E is nested in the entity X of this description: "
                                   "only entities may name it"),
    ]

    def test_refusals_name_file_and_line(self):
        for what, text, message in self.CASES:
            with self.subTest(what):
                with self.assertRaises(typedesc.DescError) as cm:
                    ldpgen.generate(numbered(text), "t/U")
                self.assertEqual(str(cm.exception), message)

    def test_an_imported_description_is_named_in_its_errors(self):
        with tempfile.TemporaryDirectory() as root:
            with open(os.path.join(root, "base.types"), "w") as f:
                f.write("namespace N\nentity A\n  attr a : U8\n  attr a : U8\n")
            with open(os.path.join(root, "top.types"), "w") as f:
                f.write('import "base.types"\nnamespace N\nentity B : A\n')
            with self.assertRaises(typedesc.DescError) as cm:
                ldpgen.load(root, "top.types")
            self.assertEqual(str(cm.exception), "base.types:4: A: a declared twice")

    def test_an_enumeration_goes_in_the_description_of_its_entity(self):
        with tempfile.TemporaryDirectory() as root:
            write(root, "base.types", "namespace N\nentity X\n")
            write(root, "top.types", 'import "base.types"\nnamespace N\nenum E in X\n  a = 1\n')
            with self.assertRaises(typedesc.DescError) as cm:
                ldpgen.generate(ldpgen.load(root, "top.types"), "top")
            self.assertEqual(str(cm.exception), "top.types:3: E: declare it in the description of X")


class Numbering(unittest.TestCase):
    UNIT = """
        namespace N
        enum Colour
          red = 1
        value V
          field x : U8
          const limit : U8 = 3
          field y : Colour = red_
          bit low : x limit
          method int extra() const;
        entity A
          key k : U32
          attr a : U8
          const c : U8 = 1
          method void helper();
          map m : U8 [U32]
          set s : U32
          function f
          children cs : Leaf [Zel::Name]
          child p : Leaf
        entity B : A
          attr b : U8
          function g
        entity C : B
          attr c2 : U8
        entity Leaf
          attr w : U8
        """

    def setUp(self):
        self.unit = numbered(self.UNIT)

    def test_entities_from_258_in_declaration_order(self):
        self.assertEqual(ids(self.unit.find("A")),
                         {"k": 258, "a": 259, "c": 260, "m": 261, "s": 262, "f": 263, "cs": 264,
                          "p": 265})
        self.assertEqual(ids(self.unit.find("Leaf")), {"w": 258})

    def test_each_level_of_derivation_adds_128(self):
        self.assertEqual(ids(self.unit.find("B")), {"b": 386, "g": 387})
        self.assertEqual(ids(self.unit.find("C")), {"c2": 514})
        self.assertEqual([self.unit.find(n).depth for n in "ABC"], [0, 1, 2])

    def test_value_fields_constants_and_bits_from_2(self):
        self.assertEqual(ids(self.unit.find("V")), {"x": 2, "limit": 3, "y": 4, "low": 5})

    def test_objects_from_130_and_keys_added_at_a_derived_level(self):
        unit = numbered("""
            object O
              attr a : U8
              method void f();
              const c : U8 = 1
              op g(U8 x) -> U8
            entity A
              key a : U8
            entity B : A
              attr b : U8
              key k : U16
              init i : U8
            """)
        self.assertEqual(ids(unit.find("O")), {"a": 130, "c": 131, "g": 132})
        self.assertEqual(ids(unit.find("B")), {"b": 386, "k": 387, "i": 388})
        _, source = ldpgen.generate(unit, "t/U")
        # The base's keys, then the derived level's, then the inits; named by every key.
        self.assertIn("B::B(uint8_t a, uint16_t k, uint8_t i) : A(a), k_(k), i_(i) {}", source)
        self.assertIn("Zel::Name B::name() const { return valueToStrep(Zel::Key(a(), k())); }", source)


def readme_example():
    """The worked example of codegen/README.md."""
    here = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(here, "..", "..", "codegen", "README.md")) as f:
        text = f.read()
    start = text.index("```\n# A router's view") + 4
    return text[start:text.index("```", start)]


class WorkedExample(unittest.TestCase):
    """The README's example uses every member kind, and says what it gives."""

    @classmethod
    def setUpClass(cls):
        root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
        with tempfile.TemporaryDirectory() as tmp:
            for path in ("platform/Platform.types", "core/LdpEnums.types"):
                with open(os.path.join(root, path)) as f:
                    write(tmp, path, f.read())
            write(tmp, "ex/Neighbor.types", readme_example())
            cls.unit = ldpgen.load(tmp, "ex/Neighbor.types")
        cls.header, cls.source = ldpgen.generate(cls.unit, "ex/Neighbor")

    def test_every_kind_each_member_taking_the_next_id_but_methods(self):
        members = self.unit.find("Neighbor").members
        kinds = [m.kind for m in members]
        self.assertEqual(set(kinds), set(ldpgen.KINDS))
        numbered_members = [m for m in members if m.kind != "method"]
        self.assertEqual([m.id for m in numbered_members], list(range(258, 258 + len(numbered_members))))

    def test_what_the_readme_promises(self):
        for text in ("Zel::Ptr<Neighbor> neighborFactory(const Ovo::IpAddr& address, LdpSessionRole role);",
                     "  void peerIs(const Zel::Ptr<const Neighbor>& neighbor);",
                     "  double labelTimeDel(const Ovo::MplsLabel& key);",
                     "  uint64_t msgRxInc(LdpMsgType key, uint64_t delta = 1);",
                     "  bool acceptsFec(const Mpls::FwdEqvClass& fec) const;",
                     "  Zel::Ptr<Neighbor> sessionIs(const Ovo::IpAddr& address, LdpSessionRole role);"):
            self.assertIn(text, self.header)
        for text in ('Zel::throwNullRefused("neighbor", "Ldp::Neighbor", "peer")',
                     'Zel::throwReinstantiation("Ldp::Neighbor", existing->name(), "role")',
                     '  statsIs("stats");\n'):
            self.assertIn(text, self.source)


class GeneratedText(unittest.TestCase):
    """A few salient properties of the generated C++ (not its full text); what the
    generated code does is checked in C++ on tests/model/TestTypes.types."""

    @classmethod
    def setUpClass(cls):
        cls.unit = numbered(Numbering.UNIT)
        cls.header, cls.source = ldpgen.generate(cls.unit, "t/Unit")

    def test_nothing_of_the_entity_is_read_after_notifying(self):
        # A handler may drop the last reference to the entity while it is notified.
        for signature in ("Zel::Ptr<Leaf> A::pIs(", "Zel::Ptr<Leaf> A::csIs(", "bool A::csDel("):
            with self.subTest(signature):
                body = function_body(self.source, signature)
                tail = body[body.rindex("visitNotifiees"):].partition("\n")[2]
                self.assertNotRegex(tail, r"\b\w+_\b", tail)

    def test_hand_written_members_and_children_of_another_namespace(self):
        self.assertIn("  void helper();", self.header)
        _, source = ldpgen.generate(numbered("namespace M\nentity Leaf\n  key k : U8\n"
                                             "namespace N\nentity E\n  children cs : M::Leaf [U8]\n"),
                                    "t/U")
        self.assertIn("Zel::Ptr<M::Leaf> child = M::leafFactory(k);", source)

    def test_an_enumeration_in_an_entity_of_the_unit_is_nested_in_its_class(self):
        header, source = ldpgen.generate(numbered("namespace N\nentity X\n  attr e : E\nenum E in X\n"
                                                  "  a = 1\nenum F in S\n  b = 2\n"), "t/U")
        self.assertNotIn("struct X", header)
        cls = header[header.index("class X : public Zel::Entity {"):]
        cls = cls[:cls.index("\n};\n")]
        self.assertIn("  enum E : uint32_t { a_ = 0x1 };", cls)
        self.assertIn("struct S {\n  enum F : uint32_t { b_ = 0x2 };", header)  # S is no entity
        self.assertIn('Zel::EnumType type("N::X::E"', source)
        self.assertIn("struct Zel::EnumTraits<N::X::E>", header)

    def test_a_base_and_the_owner_of_a_nested_enumeration_come_first(self):
        header, _ = ldpgen.generate(numbered("namespace N\nentity B : A\n  attr e : O::E\nentity A\n"
                                             "  key k : U8\nentity O\nenum E in O\n  a = 1\n"), "t/U")
        at = {n: header.index(f"class {n} : public") for n in "AOB"}
        self.assertLess(at["A"], at["B"])
        self.assertLess(at["O"], at["B"])


class Driver(unittest.TestCase):
    def test_writes_header_and_source_or_reports_the_error(self):
        with tempfile.TemporaryDirectory() as root:
            os.makedirs(os.path.join(root, "src", "d"))
            desc = os.path.join(root, "src", "d", "U.types")
            with open(desc, "w") as f:
                f.write("namespace N\nentity E\n  attr a : U8\n")
            out = os.path.join(root, "gen")
            self.assertEqual(ldpgen.main(["--source-root", os.path.join(root, "src"),
                                          "--out-root", out, "d/U.types"]), 0)
            with open(os.path.join(out, "d", "U.gen.cpp")) as f:
                self.assertIn('#include "d/U.gen.h"', f.read())
            self.assertTrue(os.path.exists(os.path.join(out, "d", "U.gen.h")))

            with open(desc, "a") as f:
                f.write("  attr a : U8\n")
            err = io.StringIO()
            with contextlib.redirect_stderr(err):
                status = ldpgen.main(["--source-root", os.path.join(root, "src"),
                                      "--out-root", out, "d/U.types"])
            self.assertEqual(status, 1)
            self.assertEqual(err.getvalue(), "ldpgen: d/U.types:4: E: a declared twice\n")

    def test_imports_become_includes_and_dependencies(self):
        with tempfile.TemporaryDirectory() as root:
            src, out = os.path.join(root, "src"), os.path.join(root, "gen")
            write(src, "platform/Platform.types", 'extern value P::Used header "p/Used.h"\n'
                                                  'extern value P::Unused header "p/Unused.h"\n')
            write(src, "b/Base.types", "namespace N\nvalue V\n  field x : U8\n")
            write(src, "b/Externs.types", 'namespace N\nextern value H header "b/H.h"\n')
            write(src, "d/U.types", 'import "b/Base.types"\nimport "b/Externs.types"\nnamespace N\n'
                                    "entity E\n  attr v : V\n  attr u : P::Used\n")
            depfile = os.path.join(out, "d", "U.gen.d")
            self.assertEqual(ldpgen.main(["--source-root", src, "--out-root", out, "--depfile", depfile,
                                          "d/U.types"]), 0)
            with open(os.path.join(out, "d", "U.gen.h")) as f:
                includes = [line for line in f.read().splitlines() if line.startswith('#include "')]
            # Generated headers of imports that generate something; hand-written headers
            # of the types the unit names.
            self.assertIn('#include "b/Base.gen.h"', includes)
            self.assertIn('#include "p/Used.h"', includes)
            self.assertNotIn('#include "p/Unused.h"', includes)
            self.assertNotIn('#include "b/Externs.gen.h"', includes)
            self.assertNotIn('#include "b/H.h"', includes)
            with open(depfile) as f:
                targets, _, deps = f.read().partition(": ")
            outputs = [os.path.join(out, "d", f"U.gen.{ext}") for ext in ("h", "cpp")]
            self.assertEqual(targets.split(), outputs)
            self.assertEqual(deps.split(), [os.path.join(src, p) for p in
                                            ("platform/Platform.types", "b/Base.types", "b/Externs.types")])


if __name__ == "__main__":
    unittest.main()
