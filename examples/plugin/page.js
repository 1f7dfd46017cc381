// The page that uses the calculator. Its language is ECMAScript 5.

// The calculator reports each calculation; the page draws a line for it.
component.on("calculated", function (term, result) {
    console.log("| " + term + " = " + result);
});

function calculate(operation, left, right) {
    try {
        console.log(operation + " gave " + component[operation](left, right));
    } catch (error) {
        console.warn(operation + " failed: " + error.message);
    }
}

console.log("the calculator can " + component.methods().join(", "));
calculate("add", 2, 3);
calculate("add", 0.1, "0.25");
calculate("add", "two", 3);
calculate("divide", 1, 0);

// Calls from the application arrive when the script has nothing else to do, so the lines for the
// calculations above are drawn before this one.
setTimeout(function () {
    calculate("divide", 22, 7);
}, 500);

setTimeout(component.quit, 1000);
