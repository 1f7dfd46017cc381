-- For pandoc: makes a page of a guide. Its title is its first heading. Links between guides lead to
-- pages. What is not installed beside them is no link.

function Link(link)
    if link.target:match("^%a+:") then
        return nil
    end
    if link.target:match("^%.%./src/") or link.target:match("^%.%./platform/") or link.target == "LICENSE" then
        return link.content
    end
    link.target = link.target:gsub("README%.md", "index.html"):gsub("%.md$", ".html"):gsub("%.md#", ".html#")
    return link
end

function Pandoc(document)
    for _, block in ipairs(document.blocks) do
        if block.t == "Header" then
            document.meta.pagetitle = pandoc.utils.stringify(block)
            break
        end
    end
    return document
end
