// The page of the tour when it runs as a plug-in: it calls the tour's method, shows the answer, and
// receives what the tour calls in turn.
component.on("show", function (text) {
  console.log("show: " + text);
});

console.log("methods: " + component.methods().join(", "));
console.log("greet answers: " + component.greet("the page"));
try {
  component.call("dance");
} catch (error) {
  console.log("dance: " + error.message);
}
