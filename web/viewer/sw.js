// Keeps the files of the viewer, so that it opens without a network. files.js lists them and is made when the viewer is put together: another list
// is another version, which takes the place of the one before.

/* global VIEWER_FILES, VIEWER_VERSION */
importScripts('files.js');

const PREFIX = 'vx-viewer-';
const NAME = PREFIX + VIEWER_VERSION;
const scope = new URL('./', self.location.href);
const own = new Set(VIEWER_FILES.map((file) => new URL(file, scope).href));

self.addEventListener('install', (event) => {
    event.waitUntil((async () => {
        const cache = await caches.open(NAME);
        await cache.addAll([...own].map((url) => new Request(url, { cache: 'reload' })));
    })());
});

self.addEventListener('activate', (event) => {
    event.waitUntil((async () => {
        const names = await caches.keys();
        await Promise.all(names.filter((name) => name.startsWith(PREFIX) && name !== NAME).map((name) => caches.delete(name)));
        await self.clients.claim();
    })());
});

// A file of the viewer comes from what is kept; drawings come from where they are.
self.addEventListener('fetch', (event) => {
    const url = new URL(event.request.url);
    const isPage = url.href.split(/[?#]/)[0] === scope.href;
    const address = isPage ? new URL('index.html', scope).href : url.href;
    if (event.request.method !== 'GET' || !own.has(address)) return;
    event.respondWith(caches.open(NAME).then(async (cache) => (await cache.match(address)) ?? fetch(event.request)));
});
