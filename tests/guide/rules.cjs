// html-validate's own rules but these.
module.exports = {
  root: true,
  extends: ["html-validate:recommended"],
  rules: {
    // An anchor holds the name of a pin or a property, whatever that is made of.
    "valid-id": ["error", { relaxed: true }],
  },
};
