// The linter's rules for the viewer's joined script (the modules are parts
// of one function, so they are checked together, as the page runs them) and
// for these tests. Only rules that catch faults: nothing about layout.
"use strict";

const faults = {
  "no-undef": "error",
  "no-unused-vars": ["error", { args: "none" }],
  "no-redeclare": "error",
  "no-dupe-keys": "error",
  "no-unreachable": "error",
  "no-self-assign": "error",
  "no-cond-assign": "error",
  "no-fallthrough": "error",
  "no-use-before-define": ["error", { functions: false, variables: false }],
  "eqeqeq": "error",
  "no-var": "off",
  "no-implicit-globals": "error",
  "no-shadow-restricted-names": "error",
  "use-isnan": "error",
  "valid-typeof": "error",
};
const browser = ["window", "document", "location", "history", "atob", "requestAnimationFrame", "Map", "Uint8Array",
  "Int8Array", "Uint16Array", "Int16Array", "Uint32Array", "Int32Array", "Float32Array", "Float64Array", "performance"];
const node = ["require", "module", "process", "__dirname", "console"];

module.exports = [
  {
    files: ["tools/viewer.js"],
    languageOptions: { ecmaVersion: 2020, sourceType: "script",
      globals: Object.fromEntries(browser.map((name) => [name, "readonly"])) },
    rules: faults,
  },
  {
    files: ["*.js"],
    languageOptions: { ecmaVersion: 2022, sourceType: "commonjs",
      globals: Object.fromEntries(node.concat(browser).map((name) => [name, "readonly"])) },
    rules: faults,
  },
];
