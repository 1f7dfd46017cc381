// The page around the hunt.
component.on("found", function (name, count) {
    console.log("found the " + name + ", " + component.progress());
    try {
        console.log("next is the " + component.cache(Number(count) + 1));
    } catch (error) {
        console.log("next: " + error.message);
    }
});
